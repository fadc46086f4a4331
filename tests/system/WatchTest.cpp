// "qorctl watch" and "qorctl watch-dtc" as a person starts them: a process with outputs.

#include <gmock/gmock.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "WatchScene.h"

using nlohmann::json;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr int success = 0;
constexpr int failure = 1;
constexpr int usage = 2;

std::vector<std::string> cellsOf(const std::string& row) {
    std::vector<std::string> cells;
    std::istringstream text(row + ",");
    for (std::string cell; std::getline(text, cell, ',');) cells.push_back(cell);
    return cells;
}

bool fits(const std::string& text, const char* pattern) {
    return std::regex_match(text, std::regex(pattern));
}

constexpr std::uint32_t softwareVersion = 1;
constexpr std::uint32_t engineSpeed = 4;  // indices in the model
constexpr std::uint32_t oilPressure = 13;

class Watch : public testing::TestWithParam<Transport> {
protected:
    WatchScene scene{GetParam()};

    unsigned sent(std::uint32_t index) const { return valuesSentIn(scene.station.wire(), index); }
};

/// A column of CSV without its empty cells: times and values.
std::vector<std::pair<double, double>> columnOf(const std::vector<std::string>& rows,
                                                std::size_t column) {
    std::vector<std::pair<double, double>> values;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto cells = cellsOf(rows[i]);
        if (!cells.at(column).empty())
            values.emplace_back(std::stod(cells[0]), std::stod(cells[column]));
    }
    return values;
}

/// What a page, or lines of JSON, have of a parameter: times and values.
json pointsOf(const json& curve) {
    json points = json::array();
    for (std::size_t i = 0; i < curve["times"].size(); ++i)
        if (!curve["values"][i].is_null())
            points.push_back({curve["times"][i], curve["values"][i]});
    return points;
}
json pointsOf(const std::vector<json>& objects, const std::string& name) {
    json points = json::array();
    for (const json& object : objects)
        if (object["values"].contains(name))
            points.push_back({object["t"], object["values"][name]});
    return points;
}

INSTANTIATE_TEST_SUITE_P(Over, Watch, everyTransport(), transportName);

TEST_P(Watch, CsvHasAHeaderAndEachValueOnceAtTheTimeOfItsArrival) {
    scene.station.script = R"({"at":[{"since":"connect","afterMs":2000,"stall":"*"}]})";
    const auto ending = scene.run(
        "watch", {"EngineSpeed", "OilPressure", "--for", "3", "--refresh", "200", "--csv"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const auto lines = linesOf(ending.out);
    ASSERT_THAT(lines, SizeIs(Ge(5u))) << ending.out;
    EXPECT_EQ("time_s,EngineSpeed,OilPressure", lines[0]);
    double lastS = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto cells = cellsOf(lines[i]);
        ASSERT_THAT(cells, SizeIs(3)) << lines[i];
        EXPECT_FALSE(cells[1].empty() && cells[2].empty()) << lines[i];
        EXPECT_GE(std::stod(cells[0]), lastS);
        lastS = std::stod(cells[0]);
    }
    EXPECT_LT(lastS, 2.5);  // QOR has been silent since
    const auto speeds = columnOf(lines, 1);
    EXPECT_THAT(speeds, Each(testing::Pair(testing::_, testing::Gt(300))));
    EXPECT_THAT(columnOf(lines, 2), SizeIs(sent(oilPressure)));
    EXPECT_THAT(speeds, SizeIs(sent(engineSpeed)));
    EXPECT_THAT(ending.err, HasSubstr("steps ok"));
}

TEST_P(Watch, JsonHasALinePerMomentOfArrivalAndTheSummaryLast) {
    const auto ending =
        scene.run("watch", {"EngineSpeed", "BatteryVoltage", "--for", "1.5", "--json"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    auto objects = jsonLinesOf(ending.out);
    ASSERT_THAT(objects, SizeIs(Ge(4u)));
    const json summary = objects.back();
    objects.pop_back();
    for (const json& object : objects) {
        EXPECT_TRUE(object["t"].is_number());
        EXPECT_FALSE(object["values"].empty()) << object;
    }
    EXPECT_EQ("watch", summary["command"]);
    EXPECT_EQ(true, summary["ok"]);
    EXPECT_EQ(objects.size(), summary["samples"]);
    EXPECT_EQ("EngineSpeed", summary["parameters"][0]["name"]);
    EXPECT_EQ("1/min", summary["parameters"][0]["unit"]);
    EXPECT_EQ(0, summary["parameters"][0]["missed"]);
    EXPECT_EQ(pointsOf(objects, "EngineSpeed").size(), summary["parameters"][0]["samples"]);
    EXPECT_EQ(pointsOf(objects, "BatteryVoltage").size(), summary["parameters"][1]["samples"]);
    EXPECT_GE(summary["parameters"][1]["samples"], 4u);
}

TEST_P(Watch, BehindTheStopQorIsAskedOnceMoreAndOnceBeforeTheEnd) {
    ASSERT_EQ(success, scene.run("watch", {"EngineSpeed", "--for", "1", "--csv"}).exitCode);
    const auto requests = scene.station.requests();
    const auto start = std::find_if(requests.begin(), requests.end(), [](const auto& request) {
        return request.rfind("SetParamList ", 0) == 0;
    });
    EXPECT_THAT(std::vector<std::string>(start, requests.end()),
                ElementsAre(StartsWith("SetParamList "), "SetParamList", "Ping 0", "Ping 0",
                            StartsWith("KwpConnect protocol=0"), "Shutdown 6"));
}

TEST_P(Watch, ATextIsShownAsOneAndWhenItHasChanged) {
    const auto ending = scene.run(
        "watch", {"SoftwareVersion", "EngineSpeed", "CoolingFan", "--for", "2.5", "--json"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const auto objects = jsonLinesOf(ending.out);
    std::vector<json> versions;
    for (const json& object : objects)
        if (object.contains("values") && object["values"].contains("SoftwareVersion"))
            versions.push_back(object["values"]);
    EXPECT_EQ((std::vector<json>{{{"SoftwareVersion", "4.12.7"}}}), versions);
    const json parameters = objects.back()["parameters"];
    EXPECT_EQ("4.12.7", parameters[0]["text"]);
    EXPECT_FALSE(parameters[1].contains("text"));
    EXPECT_FALSE(parameters[2].contains("text"));
    EXPECT_EQ(parameters[1]["samples"], sent(engineSpeed));
    EXPECT_EQ(0u, sent(softwareVersion));
}

TEST_P(Watch, TextsAloneCanBeWatched) {
    const auto ending = scene.run("watch", {"SoftwareVersion", "CalibrationId", "--for", "1.5"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    EXPECT_THAT(linesOf(ending.out), ElementsAre(EndsWith(" SoftwareVersion 4.12.7"),
                                                 EndsWith(" CalibrationId CAL-1800-R2")));
}

TEST_P(Watch, PlainLinesTellAConstantOnce) {
    const auto ending = scene.run("watch", {"EngineSpeed", "MaxEngineSpeed", "--for", "1.5"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    unsigned speeds = 0;
    unsigned limits = 0;
    for (const std::string& line : linesOf(ending.out)) {
        EXPECT_TRUE(fits(line, "[0-9]+\\.[0-9]{3} [A-Za-z]+ [0-9.]+")) << line;
        if (line.find(" EngineSpeed ") != std::string::npos) ++speeds;
        if (line.find(" MaxEngineSpeed 6500") != std::string::npos) ++limits;
    }
    EXPECT_GE(speeds, 2u);
    EXPECT_EQ(1u, limits);
}

TEST_P(Watch, AnUnknownNameIsToldAndNothingIsWatched) {
    const auto ending =
        scene.run("watch", {"EngineSpeed", "NoSuchThing", "Other One", "--csv", "--for", "5"});
    EXPECT_EQ(failure, ending.exitCode);
    EXPECT_THAT(ending.out, IsEmpty());
    EXPECT_THAT(ending.err,
                HasSubstr("not described: NoSuchThing, Other One\n        cause: unknownName: "));
    EXPECT_THAT(ending.err, Not(HasSubstr("  watch ")));
    EXPECT_THAT(ending.err, HasSubstr("ok      shut down"));
}

TEST_P(Watch, AParameterThatStallsIsToldByADashOnce) {
    scene.station.script = R"({"at":[{"since":"connect","afterMs":1200,"stall":"OilPressure"}]})";
    const auto ending = scene.run("watch", {"EngineSpeed", "OilPressure", "--for", "2.3"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    std::vector<std::string> pressures;
    for (const std::string& line : linesOf(ending.out))
        if (line.find(" OilPressure ") != std::string::npos) pressures.push_back(line);
    ASSERT_THAT(pressures, SizeIs(Ge(2u)));
    EXPECT_TRUE(fits(pressures.back(), "[0-9]+\\.[0-9]{3} OilPressure -")) << ending.out;
    pressures.pop_back();
    EXPECT_THAT(pressures, Each(Not(testing::EndsWith("-"))));
}

TEST_P(Watch, AParameterThatStallsAddsNoRowUntilItReturns) {
    scene.station.script = R"({"at":[{"since":"connect","afterMs":1200,"stall":"EngineSpeed"},
                             {"since":"connect","afterMs":2800,"resume":"EngineSpeed"},
                             {"since":"connect","afterMs":3600,"stall":"*"}]})";
    const auto ending = scene.run(
        "watch", {"EngineSpeed", "OilPressure", "--for", "4.5", "--refresh", "150", "--csv"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const auto lines = linesOf(ending.out);
    const auto speeds = columnOf(lines, 1);
    ASSERT_THAT(speeds, SizeIs(Ge(4u)));
    EXPECT_THAT(speeds, SizeIs(sent(engineSpeed)));
    EXPECT_THAT(columnOf(lines, 2), SizeIs(sent(oilPressure)));
    EXPECT_GT(sent(oilPressure), sent(engineSpeed) + 4);
    double longestS = 0;
    for (std::size_t i = 1; i < speeds.size(); ++i)
        longestS = std::max(longestS, speeds[i].first - speeds[i - 1].first);
    EXPECT_GT(longestS, 1.3) << ending.out;
}

TEST_P(Watch, ThePageHoldsTheValuesThatWerePrinted) {
    const std::string page = scene.station.folder.write("page.html", "an old page");
    const auto ending = scene.run(
        "watch", {"EngineSpeed", "OilPressure", "--for", "1.5", "--json", "--plot", page});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const std::string text = bytesOfFile(page);
    EXPECT_THAT(text, StartsWith("<!doctype html>"));
    EXPECT_THAT(text, HasSubstr("<title>EngineSpeed, OilPressure</title>"));
    EXPECT_THAT(text, HasSubstr("var uPlot="));
    EXPECT_THAT(text, Not(HasSubstr("{{")));
    const std::string opening = R"(<script id="data" type="application/json">)";
    const std::size_t begin = text.find(opening);
    ASSERT_NE(std::string::npos, begin);
    const json data = json::parse(text.substr(
        begin + opening.size(), text.find("</script>", begin) - begin - opening.size()));
    auto objects = jsonLinesOf(ending.out);
    objects.pop_back();
    const json speeds = pointsOf(objects, "EngineSpeed");
    EXPECT_GE(speeds.size(), 4u);
    EXPECT_EQ(speeds, pointsOf(data["curves"][0]));
    EXPECT_EQ(pointsOf(objects, "OilPressure"), pointsOf(data["curves"][1]));
    EXPECT_EQ("Transport", data["about"][1][0]);
}

TEST_P(Watch, APageThatCannotBeWrittenIsFoundOutBeforeQorIsStarted) {
    for (const std::string& page :
         {scene.station.folder.path(), scene.station.folder.pathOf("none\\page.html")}) {
        const auto ending = scene.run("watch", {"EngineSpeed", "--for", "1", "--plot", page});
        EXPECT_EQ(usage, ending.exitCode);
        EXPECT_THAT(ending.err, AllOf(StartsWith("qorctl watch: --plot "), HasSubstr(page)));
    }
    EXPECT_FALSE(fileExists(scene.station.settings.log));
}

TEST_P(Watch, WhenNothingComesAllTheTimeTheCommandSaysSoAndFails) {
    scene.station.script = R"({"at":[{"since":"client","stall":"*","afterMs":0}]})";
    const auto ending = scene.run("watch", {"EngineSpeed", "--for", "3.5", "--csv"});
    EXPECT_EQ(failure, ending.exitCode);
    EXPECT_EQ("time_s,EngineSpeed\n", ending.out);
    EXPECT_THAT(ending.err, HasSubstr("note    no value of EngineSpeed yet: "));
    EXPECT_THAT(ending.err, HasSubstr("no value came in 3.5 s"));
}

TEST_P(Watch, TroubleCodesAreListedOnceWhileTheyStayTheSame) {
    const auto ending = scene.run("watch-dtc", {"--for", "1.5", "--period", "100"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const auto lines = linesOf(ending.out);
    ASSERT_THAT(lines, SizeIs(8)) << ending.out;
    EXPECT_TRUE(fits(lines[0], "[0-9]\\.[0-9]{3} 5 trouble codes")) << lines[0];
    EXPECT_THAT(lines[3], HasSubstr("0x0113  0x60    P0113"));
}

TEST_P(Watch, TroubleCodesAsJsonEndWithTheSummary) {
    const auto ending = scene.run("watch-dtc", {"--for", "1", "--period", "100", "--json"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const auto objects = jsonLinesOf(ending.out);
    ASSERT_THAT(objects, SizeIs(2));
    EXPECT_EQ(5u, objects[0]["codes"].size());
    EXPECT_EQ(0x113, objects[0]["codes"][0]["code"]);
    EXPECT_GE(objects[1]["lists"], 2u);
    EXPECT_EQ(objects[0]["codes"], objects[1]["codes"]);
}

TEST_P(Watch, FourFailedReadingsOfTroubleCodesAreToldInALine) {
    scene.station.script = R"({"rules":[{"match":{"id":9},"action":{"answer":"refuse"}}]})";
    const auto ending =
        scene.run("watch-dtc", {"--for", "2", "--period", "100", "--timeout", "300"});
    EXPECT_EQ(failure, ending.exitCode);
    EXPECT_THAT(linesOf(ending.out),
                AllOf(SizeIs(Ge(1u)), Each(HasSubstr(" could not be read, four times in a row"))));
    EXPECT_THAT(ending.err, HasSubstr("no list came in "));
}

}  // namespace
