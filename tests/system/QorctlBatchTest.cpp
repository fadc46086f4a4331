// Many operations of the command-line host in one conversation: every operation of the library.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "QorctlScene.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using nlohmann::json;

struct Line {
    const char* text;
    json result;  ///< what it brings; null: nothing
};

json values(const char* name, const std::vector<double>& first) {
    return {{"name", name}, {"values", first}};
}

json arrays(const char* name, const char* unit, const std::vector<double>& first,
            const std::vector<double>& second) {
    return {{"name", name},
            {"unit", unit},
            {"values", first},
            {"second", second},
            {"third", json::array()}};
}

std::vector<Line> beginning() {
    return {
        {"connect --can-baud 500000", nullptr},
        {"ping", nullptr},
        {"status",
         {{"ecuOnline", true},
          {"connecting", false},
          {"ramSegment", "WorkingPage"},
          {"romSegment", "ReferencePage"}}},
        {"describe MaxVehicleSpeed",
         {{{"name", "MaxVehicleSpeed"},
           {"text1", "MaxVehicleSpeed"},
           {"text2", "Vehicle speed limit"},
           {"text3", "Limits"},
           {"text4", "km/h"},
           {"value", 0},
           {"threeArrays", false}}}},
    };
}

std::vector<Line> parameters() {
    return {
        {"set MaxVehicleSpeed 180", nullptr},
        {"segment rom", nullptr},
        {"sleep 150", nullptr},  // until the cache has forgotten what was written
        {"get MaxVehicleSpeed", json::array({arrays("MaxVehicleSpeed", "km/h", {210}, {})})},
        {"segment ram", nullptr},
        {"sleep 150", nullptr},
        {"get MaxVehicleSpeed", json::array({arrays("MaxVehicleSpeed", "km/h", {180}, {})})},
        {"set DwellTime 7,5,4,3,2 --second 6 8 10 13 16", nullptr},
        {"sleep 150", nullptr},
        {"get DwellTime",
         json::array({arrays("DwellTime", "ms", {7, 5, 4, 3, 2}, {6, 8, 10, 13, 16})})},
        {"get-string SoftwareVersion",
         json::array({{{"name", "SoftwareVersion"}, {"text", "4.12.7"}}})},
        {"set-dynamic CylinderCount 6", nullptr},
        {"start-control CoolingFan", nullptr},
        {"set CoolingFan 2", nullptr},
        {"get-at-once CylinderCount CoolingFan",
         json::array({values("CylinderCount", {6}), values("CoolingFan", {2})})},
        {"stop-control CoolingFan", nullptr},
        {"get-at-once CoolingFan", json::array({values("CoolingFan", {0})})},
    };
}

std::vector<Line> diagnosticsAndModel() {
    return {
        {"clear-dtc", nullptr},
        {"read-dtc", json::array()},
        {"connect-can", nullptr},
        {"send-can 0x201 0 07 01", nullptr},
        {"read-can 0x201 0x7FF",
         json::array({{{"id", 0x201}, {"value", 0x107}}, {{"id", 0x7FF}, {"value", -1}}})},
        {"open-model engine.sdm --export-wait 10",
         {{"exports",
           {{{"path", "c:\\qor_exp.sde"}, {"bytes", 150000}},
            {{"path", "c:\\qor_exp_add.sde"}, {"bytes", 4096}}}}}},
    };
}

/// Every operation once, in an order in which they make sense.
std::vector<Line> everyOperation() {
    std::vector<Line> lines;
    for (const auto& part : {beginning(), parameters(), diagnosticsAndModel()})
        lines.insert(lines.end(), part.begin(), part.end());
    return lines;
}

class QorctlBatch : public QorctlScene {
protected:
    QorctlProcess::Ended run(const std::string& lines, const std::vector<std::string>& more = {}) {
        return QorctlScene::run("batch", more, lines);
    }
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlBatch, everyTransport(), transportName);

TEST_P(QorctlBatch, EveryOperationOfTheLibraryDoesItsWork) {
    std::string text;
    for (const Line& line : everyOperation()) text += std::string(line.text) + "\n";

    const auto ended = run(text, {"--json"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    const json done = json::parse(ended.out).at("operations");
    const auto expected = everyOperation();
    ASSERT_EQ(expected.size(), done.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(true, done[i].at("ok")) << expected[i].text;
        EXPECT_EQ(expected[i].result, done[i].at("result")) << expected[i].text;
    }
}

TEST_P(QorctlBatch, TroubleCodesAndKwpAnswersAreToldWhole) {
    const auto ended = run("read-dtc\nkwp 0x1A 9B\n", {"--json"});

    const json done = json::parse(ended.out).at("operations");
    ASSERT_EQ(2u, done.size());
    ASSERT_EQ(5u, done[0].at("result").size());
    EXPECT_EQ(
        (json{{"code", 0x113},
              {"status", 0x60},
              {"texts",
               {"P0113", "Intake air temperature sensor: signal too high", "sporadic", "Air"}}}),
        done[0].at("result")[0]);
    EXPECT_EQ((json{{"service", 0x1A},
                    {"request", "9B"},
                    {"answer", "5A 9B 34 2E 31 32 2E 37 00 00"},
                    {"failed", 0}}),
              done[1].at("result"));
}

TEST_P(QorctlBatch, AFailureEndsItUnlessItShallGoOn) {
    const std::string lines = "get Nobody # unknown\nping\n";

    const auto stopped = run(lines);
    const auto wentOn = run(lines, {"--keep-going", "--json"});

    EXPECT_EQ(1, stopped.exitCode);
    EXPECT_THAT(stopped.err, HasSubstr("3 of 4 steps ok"));
    EXPECT_EQ(1, wentOn.exitCode);
    const json done = json::parse(wentOn.out).at("operations");
    ASSERT_EQ(2u, done.size());
    EXPECT_EQ(false, done[0].at("ok"));
    EXPECT_EQ(true, done[1].at("ok"));
}

TEST_P(QorctlBatch, ALineThatIsNotUnderstoodIsFoundBeforeAnythingIsDone) {
    const auto ended = run("ping\nfly high\n");

    EXPECT_EQ(2, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("standard input: line 2: there is no operation \"fly\""));
    EXPECT_THAT(station.requests(), IsEmpty());
}

TEST_P(QorctlBatch, TheLinesMayStandInAFile) {
    const std::string file =
        station.folder.write("lines.txt", "get-string \"SoftwareVersion\"\r\n");

    const auto ended = run("", {file});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_EQ("SoftwareVersion: 4.12.7\n", ended.out);
}

}  // namespace
