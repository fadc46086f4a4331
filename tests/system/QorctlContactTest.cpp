// What the command-line host says of the end, and of what it loses on the way.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "QorctlScene.h"
#include "QorProcesses.h"

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

MATCHER_P(Holds, pattern, "") {
    return std::regex_search(arg, std::regex(pattern));
}

class QorctlContact : public QorctlScene {
protected:
    /// QOR does this so long after the ECU was connected.
    void afterConnect(unsigned ms, const std::string& effect) {
        station.script =
            R"({"at":[{"since":"connect","afterMs":)" + std::to_string(ms) + "," + effect + "}]}";
    }
    /// The last line of a watch, the whole of other commands.
    static json summaryOf(const std::string& out) {
        const std::string text = out.substr(0, out.find_last_not_of('\n') + 1);
        const std::size_t last = text.rfind("\n{");
        return json::parse(last == std::string::npos ? text : text.substr(last));
    }
    static json stepOf(const json& summary, const std::string& name) {
        for (const json& step : summary.at("steps"))
            if (step.at("step") == name) return step;
        return nullptr;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlContact, everyTransport(), transportName);

TEST_P(QorctlContact, AQorOfItsOwnIsToldToEndAndItsEcuDisconnected) {
    const auto ended = run("get", {"MaxVehicleSpeed"});
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Holds("ok +shut down +[0-9]+ ms  ECU disconnected, QOR (told to "
                                 "end|has ended)\n"));
}

TEST_P(QorctlContact, AnEcuThatWasNotConnectedIsNotSaidToBeDisconnected) {
    const auto ended = run("ping");
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Holds("ok +shut down +[0-9]+ ms  QOR (told to end|has ended)\n"));
}

TEST_P(QorctlContact, AQorOfSomebodyElsesIsLeftAsItIs) {
    station.writeSettings();
    station.startQorByHand();
    station.settings.executable.clear();
    const auto ended = run("get", {"MaxVehicleSpeed"});
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, AllOf(HasSubstr("QOR and its ECU left as they are"),
                                 Not(HasSubstr("told to end")), Not(HasSubstr("disconnected"))));
    EXPECT_THAT(qor::running(), SizeIs(1));
    qor::killAll();
}

TEST_P(QorctlContact, AQorThatHasCrashedIsNotSaidToBeToldToEnd) {
    afterConnect(1000, R"("exit":3)");
    const auto ended = run("batch", {"--json"}, "connect\nsleep 10000\n");
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, AllOf(HasSubstr("  QOR was lost\n        cause: noConnection: "),
                                 Not(HasSubstr("told to end")), Not(HasSubstr("disconnected"))));
    const json summary = summaryOf(ended.out);
    EXPECT_EQ("qor", summary.at("lost"));
    EXPECT_THAT(stepOf(summary, "shut down").at("text").get<std::string>(),
                StartsWith("QOR had already ended"));
    EXPECT_EQ(false, stepOf(summary, "sleep 10000").at("ok"));
}

// The last line has begun when QOR goes.
TEST_P(QorctlContact, AQorThatCrashesAtTheLastLineFailsABatchToo) {
    afterConnect(1000, R"("exit":3)");
    const auto ended = run("batch", {}, "connect\nsleep 1200\n");
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Holds("FAILED +keep in contact .*  QOR was lost\n"));
}

TEST_P(QorctlContact, AnEcuThatIsLostShortlyBeforeTheEndFailsAWatch) {
    afterConnect(3000, R"("online":false)");
    const auto ended = run("watch", {"EngineSpeed", "--for", "6", "--json"});
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Holds("FAILED +watch .* samples, then the ECU was lost\n"));
    EXPECT_THAT(ended.err, Not(HasSubstr("keep in contact")));
    const json summary = summaryOf(ended.out);
    EXPECT_EQ("ecu", summary.at("lost"));
    EXPECT_EQ(false, summary.at("ok"));
    EXPECT_EQ(false, stepOf(summary, "watch").at("ok"));
    EXPECT_THAT(ended.err, Not(HasSubstr("ECU disconnected")));
}

TEST_P(QorctlContact, AWatchThatKeepsGoingGoesOnAndTells) {
    afterConnect(500, R"("online":false)");
    const auto ended = run("watch", {"EngineSpeed", "--for", "5", "--json", "--keep-going"});
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("note    the ECU was lost\n"));
    const json summary = summaryOf(ended.out);
    EXPECT_EQ("ecu", summary.at("lost"));
    EXPECT_GE(summary.at("seconds"), 5.0);
}

TEST_P(QorctlContact, AWatchEndsWithItsQor) {
    afterConnect(1500, R"("exit":3)");
    const auto ended = run("watch", {"EngineSpeed", "--for", "30", "--json"});
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Holds("FAILED +watch .* samples, then QOR was lost\n"));
    EXPECT_THAT(ended.err, HasSubstr("QOR had already ended"));
    const json summary = summaryOf(ended.out);
    EXPECT_EQ("qor", summary.at("lost"));
    EXPECT_LT(summary.at("seconds"), 15.0);
}

TEST_P(QorctlContact, AStreamThatIsSilentAtTheEndFailsAWatchUnlessItKeepsGoing) {
    afterConnect(1000, R"("stall":"OilPressure")");
    const std::vector<std::string> options = {"EngineSpeed", "OilPressure", "--for", "4"};
    const auto ended = run("watch", options);
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr(", nothing of OilPressure in the last 2.0 s\n"));

    auto keepingGoing = options;
    keepingGoing.emplace_back("--keep-going");
    const auto kept = run("watch", keepingGoing);
    EXPECT_EQ(0, kept.exitCode) << kept.err;
    EXPECT_THAT(kept.err, HasSubstr(", nothing of OilPressure in the last 2.0 s\n"));
}

TEST_P(QorctlContact, AWatchOfCodesEndsWithTheEcu) {
    afterConnect(1000, R"("online":false)");
    const auto ended = run("watch-dtc", {"--for", "30", "--period", "100"});
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("then the ECU was lost\n"));
}

TEST_P(QorctlContact, ABatchEndsWithTheEcuUnlessItKeepsGoing) {
    afterConnect(500, R"("online":false)");
    const std::string lines = "connect\nsleep 4000\nget MaxVehicleSpeed\n";
    const auto ended = run("batch", {}, lines);
    EXPECT_EQ(1, ended.exitCode) << ended.err;
    EXPECT_EQ("", ended.out);
    EXPECT_THAT(ended.err, Holds("FAILED +sleep 4000 .*  the ECU was lost\n"));

    const auto kept = run("batch", {"--keep-going"}, lines);
    EXPECT_EQ(0, kept.exitCode) << kept.err;
    EXPECT_EQ("MaxVehicleSpeed: 210\n", kept.out);
    EXPECT_THAT(kept.err, HasSubstr("note    the ECU was lost\n"));
}

// It answers no question for the ECU's state either.
TEST_P(QorctlContact, AnEcuIsNotLostWhileQorIsSilent) {
    station.script =
        R"({"rules":[{"match":{"id":2,"operation":2,"nth":6},"action":{"hangMs":4000}}]})";
    const auto ended = run("watch", {"EngineSpeed", "--for", "9", "--timeout", "300"});
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.out, HasSubstr(" EngineSpeed -\n"));  // it was silent
    EXPECT_THAT(ended.err, Not(HasSubstr("was lost")));
}

}  // namespace
