// What the command-line host tells of parameters: their units, which names are missing, and what is
// no text; and whether QOR has opened what it was told to open.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "QorctlScene.h"
#include "QorProcesses.h"
#include "Waiting.h"

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

namespace {

class QorctlParams : public QorctlScene {
protected:
    json resultOf(const std::string& command, std::vector<std::string> more) {
        more.push_back("--json");
        return json::parse(run(command, more).out).at("result");
    }
    /// The row of a result about that parameter.
    static json rowOf(const json& rows, const std::string& name) {
        for (const json& row : rows)
            if (row.at("name") == name) return row;
        ADD_FAILURE() << "nothing about " << name << ": " << rows;
        return {};
    }
    void refuse(unsigned id) {
        station.script = R"({"rules":[{"match":{"id":)" + std::to_string(id) +
                         R"(},"action":{"answer":"refuse"}}]})";
    }
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlParams, everyTransport(), transportName);

TEST_P(QorctlParams, ThatAreMissingAreNamedAloneWhereSeveralWereRead) {
    const auto ended = run("get-at-once", {"EngineSpeed", "NoSuch", "EngineLoad", "Nobody"});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_EQ("", ended.out);
    EXPECT_THAT(ended.err, HasSubstr("  not read: NoSuch, Nobody\n        cause: unknownName: "));
}

TEST_P(QorctlParams, ThatWereNotReadForAnotherReasonAreAllNamed) {
    refuse(18);
    const auto ended = run("get-at-once", {"EngineSpeed", "EngineLoad"});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_THAT(ended.err,
                HasSubstr("  not read: EngineSpeed, EngineLoad\n        cause: refused"));
}

TEST_P(QorctlParams, HaveTheirUnitInJsonWhereThereIsOne) {
    const json alone = resultOf("get", {"MaxVehicleSpeed", "CylinderCount"});
    EXPECT_EQ("km/h", rowOf(alone, "MaxVehicleSpeed").at("unit"));
    EXPECT_FALSE(rowOf(alone, "CylinderCount").contains("unit"));
    const json together = resultOf("get-at-once", {"MaxVehicleSpeed", "CylinderCount"});
    EXPECT_EQ("km/h", rowOf(together, "MaxVehicleSpeed").at("unit"));
    EXPECT_FALSE(rowOf(together, "CylinderCount").contains("unit"));
}

TEST_P(QorctlParams, ThatAreNumbersAreReadAsTextsWithAWarning) {
    const auto ended = run("get-string", {"SoftwareVersion", "MaxVehicleSpeed", "CylinderCount"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.out, HasSubstr("SoftwareVersion: 4.12.7\nMaxVehicleSpeed: "));
    EXPECT_THAT(ended.err,
                HasSubstr("warning MaxVehicleSpeed is no text, its values are 210 km/h"));
    EXPECT_THAT(ended.err, HasSubstr("warning CylinderCount is no text, its values are 4; read"));
    EXPECT_THAT(ended.err, Not(HasSubstr("warning SoftwareVersion")));
}

TEST_P(QorctlParams, TheWarningStandsInJsonToo) {
    const json rows = resultOf("get-string", {"SoftwareVersion", "MaxVehicleSpeed"});
    EXPECT_FALSE(rowOf(rows, "SoftwareVersion").contains("warning"));
    EXPECT_EQ("MaxVehicleSpeed is no text, its values are 210 km/h",
              rowOf(rows, "MaxVehicleSpeed").at("warning"));
}

TEST_P(QorctlParams, OfTheModelAreListedWithUnitAndLimits) {
    const auto ended = run("list");

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_TRUE(std::regex_search(
        ended.out, std::regex("\nMaxVehicleSpeed +km/h +30 +300 +Limits +Vehicle speed limit\n")));
    const json rows = resultOf("list", {});
    EXPECT_EQ((json{{"name", "MaxVehicleSpeed"},
                    {"unit", "km/h"},
                    {"lowest", 30.0},
                    {"highest", 300.0},
                    {"group", "Limits"},
                    {"meaning", "Vehicle speed limit"}}),
              rowOf(rows, "MaxVehicleSpeed"));
    EXPECT_FALSE(rowOf(rows, "SoftwareVersion").contains("lowest"));
    EXPECT_FALSE(rowOf(rows, "SoftwareVersion").contains("unit"));
}

TEST_P(QorctlParams, OfAListAreListedAndThoseThatQorDoesNotKnowNamed) {
    const std::string names = station.folder.write("names.txt", "# mine\nOilPressure\nNoSuch\n");
    const auto ended = run("list", {"--names", names, "--json"});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("  not described: NoSuch\n"));
    const json rows = json::parse(ended.out).at("result");
    ASSERT_EQ(1u, rows.size());
    EXPECT_EQ("bar", rowOf(rows, "OilPressure").at("unit"));
    EXPECT_EQ(10.0, rowOf(rows, "OilPressure").at("highest"));
}

TEST_P(QorctlParams, CannotBeListedWithoutNames) {
    station.settings.model = station.folder.pathOf("no model.json");
    const std::string path = station.folder.write("x.ini", station.settings.text());
    station.settings.model.clear();
    station.writeSettings();
    ASSERT_TRUE(station.settings.startQor(station.settingsPath));
    const auto ended = runQorctl({"list", path, "--trace", station.tracePath(), "--no-connect"});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("QOR tells no names"));
    EXPECT_THAT(ended.err, HasSubstr("give --names FILE"));
}

TEST_P(QorctlParams, AModelThatQorDoesNotOpenIsAFailure) {
    refuse(1);
    const auto ended = run("open-model", {"engine.sdm", "--export-wait", "0.1"});

    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("QOR has not opened the model\n        cause: refused"));
}

TEST_P(QorctlParams, AModelThatTakesLongNeedNotBeAwaited) {
    station.script = R"({"rules":[{"match":{"id":1},"action":{"hangMs":60000}}]})";
    station.writeSettings();
    station.startQorByHand();  // so that this test can end it
    QorctlProcess qorctl(words("open-model", {"engine.sdm"}));
    EXPECT_TRUE(eventually(20000, [&] { return station.traceHolds("Opening model"); }));
    Sleep(500);
    qorctl.raise(CTRL_C_EVENT);
    const auto ended = qorctl.wait(9000);  // of which the library waits 5 s for itself
    qor::killAll();

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("FAILED  open-model"));
    EXPECT_THAT(ended.err, HasSubstr("cancelled with Ctrl-C"));
}

TEST_P(QorctlParams, ABusThatQorDoesNotOpenIsAFailure) {
    refuse(16);
    for (const auto& words : {std::vector<std::string>{"connect-can"}, {"read-can", "0x201"}}) {
        const auto ended =
            run(words.front(), std::vector<std::string>(words.begin() + 1, words.end()));
        EXPECT_EQ(1, ended.exitCode) << ended.err;
        EXPECT_THAT(ended.err, HasSubstr("QOR has not opened the bus\n        cause: refused"));
    }
}

}  // namespace
