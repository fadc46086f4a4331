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
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;
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

class Watch : public testing::TestWithParam<Transport> {
protected:
    WatchScene scene{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Over, Watch, everyTransport(), transportName);

TEST_P(Watch, CsvHasAHeaderAndARowPerRefreshPeriod) {
    const auto ending = scene.run(
        "watch", {"EngineSpeed", "OilPressure", "--for", "2", "--refresh", "200", "--csv"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    const auto lines = linesOf(ending.out);
    ASSERT_THAT(lines, SizeIs(AllOf(Ge(5u), Le(11u)))) << ending.out;
    EXPECT_EQ("time_s,EngineSpeed,OilPressure", lines[0]);
    double lastS = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto cells = cellsOf(lines[i]);
        ASSERT_THAT(cells, SizeIs(3)) << lines[i];
        const double timeS = std::stod(cells[0]);
        EXPECT_GT(timeS, lastS + 0.05);
        EXPECT_GT(std::stod(cells[1]), 300);
        EXPECT_LT(std::stod(cells[2]), 10);
        lastS = timeS;
    }
    EXPECT_THAT(ending.err, HasSubstr("steps ok"));
}

TEST_P(Watch, JsonHasALinePerSampleAndTheSummaryLast) {
    const auto ending =
        scene.run("watch", {"EngineSpeed", "BatteryVoltage", "--for", "1.5", "--json"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    auto objects = jsonLinesOf(ending.out);
    ASSERT_THAT(objects, SizeIs(Ge(4u)));
    const json summary = objects.back();
    objects.pop_back();
    for (const json& object : objects) {
        EXPECT_TRUE(object["t"].is_number());
        EXPECT_EQ(2u, object["values"].size()) << object;
    }
    EXPECT_EQ("watch", summary["command"]);
    EXPECT_EQ(true, summary["ok"]);
    EXPECT_EQ(objects.size(), summary["samples"]);
    EXPECT_EQ("EngineSpeed", summary["parameters"][0]["name"]);
    EXPECT_EQ("1/min", summary["parameters"][0]["unit"]);
    EXPECT_EQ(objects.size(), summary["parameters"][0]["samples"]);
}

TEST_P(Watch, BehindTheStopQorIsAskedOnceMoreBeforeTheQueueGoes) {
    ASSERT_EQ(success, scene.run("watch", {"EngineSpeed", "--for", "1", "--csv"}).exitCode);
    const auto requests = scene.station.requests();
    const auto start = std::find_if(requests.begin(), requests.end(), [](const auto& request) {
        return request.rfind("SetParamList ", 0) == 0;
    });
    EXPECT_THAT(std::vector<std::string>(start, requests.end()),
                ElementsAre(StartsWith("SetParamList "), "SetParamList", "Ping 0",
                            StartsWith("KwpConnect protocol=0"), "Shutdown 6"));
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

TEST_P(Watch, AParameterThatStallsLeavesEmptyCellsUntilItReturns) {
    scene.station.script = R"({"at":[{"since":"connect","afterMs":1200,"stall":"EngineSpeed"},
                             {"since":"connect","afterMs":2800,"resume":"EngineSpeed"}]})";
    const auto ending = scene.run(
        "watch", {"EngineSpeed", "OilPressure", "--for", "4", "--refresh", "150", "--csv"});
    ASSERT_EQ(success, ending.exitCode) << ending.err;
    std::string course;  // of the stalling one: a letter per row
    unsigned otherRows = 0;
    const auto lines = linesOf(ending.out);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto cells = cellsOf(lines[i]);
        ASSERT_THAT(cells, SizeIs(3)) << lines[i];
        course += cells[1].empty() ? '.' : 'x';
        if (!cells[2].empty()) ++otherRows;
    }
    EXPECT_TRUE(fits(course, "\\.*x+\\.{3,}x+")) << ending.out;
    EXPECT_GE(otherRows + 2, course.size());
}

TEST_P(Watch, ThePageHoldsTheSamplesThatWerePrinted) {
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
    ASSERT_EQ(objects.size(), data["times"].size());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        EXPECT_EQ(objects[i]["t"], data["times"][i]);
        EXPECT_EQ(objects[i]["values"].value("EngineSpeed", json()),
                  data["curves"][0]["values"][i]);
        EXPECT_EQ(objects[i]["values"].value("OilPressure", json()),
                  data["curves"][1]["values"][i]);
    }
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
