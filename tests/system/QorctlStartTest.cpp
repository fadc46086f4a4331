// How the command-line host begins: what keeps it from that is named within 2 s, and a host that is
// there already goes on unharmed.

#include "Stranger.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "BoxOnScreen.h"
#include "QorctlProcess.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using nlohmann::json;
using testing::AllOf;
using testing::AnyOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr int occupied = 5;
// 2 s on a machine at rest; the library alone takes 11 s.
constexpr double soonMs = 5000;

class QorctlStart : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    bool isTcp() const { return GetParam() == Transport::tcp; }

    std::vector<std::string> words(const std::string& command,
                                   const std::vector<std::string>& more = {}) const {
        std::vector<std::string> all = {command, station.settingsPath, "--trace",
                                        station.tracePath()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    /// The text of the step that has failed, and its details; the whole run is a short one.
    std::string whyNotStarted(const std::string& settings) {
        auto all = words("ping", {"--json"});
        all[1] = settings;
        const QorctlProcess::Ended ended = runQorctl(all);
        EXPECT_NE(0, ended.exitCode);
        exitCode = ended.exitCode;
        err = ended.err;
        const json summary = json::parse(ended.out, nullptr, false);
        if (summary.is_discarded()) return "no JSON: " + ended.out;
        EXPECT_THAT(summary.at("steps"), SizeIs(1)) << ended.err;
        const json& step = summary.at("steps").at(0);
        EXPECT_EQ("start QOR", step.at("step"));
        EXPECT_LT(step.at("ms").get<double>(), limitMs) << ended.err;
        EXPECT_EQ("", summary.at("qorExecutable"));
        EXPECT_EQ(false, step.at("ok"));
        std::string text = step.at("text");
        for (const json& line : step.at("details")) text += "\n" + line.get<std::string>();
        return text;
    }
    std::string whyNotStarted() {
        station.writeSettings();
        return whyNotStarted(station.settingsPath);
    }
    void damage(const std::string& from, const std::string& to) const {
        std::string text = bytesOfFile(station.settingsPath);
        ASSERT_NE(std::string::npos, text.find(from));
        station.folder.write("qor settings.ini", text.replace(text.find(from), from.size(), to));
    }
    /// A watch that has begun to show values, and goes on until it is interrupted.
    std::unique_ptr<QorctlProcess> startWatch() {
        station.writeSettings();
        auto watch = std::make_unique<QorctlProcess>(words("watch", {"EngineSpeed", "--csv"}));
        EXPECT_TRUE(eventually(15000, [&] { return isWatching(); }));
        return watch;
    }
    bool isWatching() const {
        for (const std::string& request : station.requests())
            if (request.find("SetParamList ") == 0) return true;
        return false;
    }
    /// What is on the screen of a ping that is cancelled after so long.
    std::string toldWithin(unsigned ms) const {
        QorctlProcess ping(words("ping"));
        Sleep(ms);
        ping.raise(CTRL_C_EVENT);
        return ping.wait().err;
    }
    /// QOR is there and does nothing for that long, once it is spoken to.
    void startBusyQor(unsigned ms) {
        station.script =
            R"({"rules":[{"match":{"nth":1},"action":{"hangMs":)" + std::to_string(ms) + "}}]}";
        station.writeSettings();
        station.startQorByHand();
    }
    unsigned requestsOf(const std::string& kind) const {
        unsigned count = 0;
        for (const std::string& request : station.requests())
            if (request.find(kind) == 0) ++count;
        return count;
    }

    double limitMs = soonMs;
    int exitCode = 0;
    std::string err;
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlStart, everyTransport(), transportName);

// Window messages stay on one machine.
class QorctlStartOverTcp : public QorctlStart {};

INSTANTIATE_TEST_SUITE_P(Over, QorctlStartOverTcp, testing::Values(Transport::tcp), transportName);

TEST_P(QorctlStart, AMissingExecutableIsNamed) {
    station.settings.executable = station.folder.pathOf("none.exe");
    EXPECT_THAT(whyNotStarted(),
                AllOf(HasSubstr("none.exe does not exist"), HasSubstr("\ncheck: ")));
    EXPECT_EQ(1, exitCode);
    EXPECT_FALSE(fileExists(station.tracePath())) << "the library was asked";
    EXPECT_THAT(err, Not(HasSubstr("        trace: ")));
}

TEST_P(QorctlStart, AProgramThatEndsAtOnceIsToldWithItsExitCodeAndItsLastWords) {
    station.settings.model = station.folder.pathOf("none.json");
    EXPECT_THAT(whyNotStarted(), AllOf(HasSubstr("qor-simulator.exe has ended with exit code 2"),
                                       HasSubstr("\nits log: "), HasSubstr("none.json")));
    EXPECT_THAT(err, HasSubstr("        its log: "));
}

TEST_P(QorctlStart, ItsLastWordsAreNotThoseOfEarlierRuns) {
    station.settings.model = station.folder.pathOf("none.json");
    station.folder.write("qor.log", "an old line\n");
    EXPECT_THAT(whyNotStarted(), Not(HasSubstr("an old line")));
}

TEST_P(QorctlStart, NobodyInQorsPlaceIsNamedWhereTheSettingsNameNoExecutable) {
    station.settings.executable.clear();
    const std::string place = isTcp() ? "port " + std::to_string(station.settings.port)
                                      : "window \"" + station.settings.titles + "-qor\"";
    EXPECT_THAT(whyNotStarted(), AllOf(StartsWith(place), HasSubstr("nobody is there")));
}

TEST_P(QorctlStart, AQorThatComesLateIsFoundAllTheSame) {
    station.settings.executable.clear();
    station.writeSettings();
    QorctlProcess ping(words("ping"));
    Sleep(300);
    station.startQorByHand();
    const auto ended = ping.wait();
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    qor::killAll();
}

TEST_P(QorctlStart, AStrangerInQorsPlaceIsNamed) {
    const Stranger stranger(station.settings);
    const std::string us = "process " + std::to_string(GetCurrentProcessId());
    // Wine does not tell whose a port is.
    const auto holder = isTcp() ? AnyOf(HasSubstr(us), HasSubstr("does not name"))
                                : AnyOf(HasSubstr(us), HasSubstr(us));
    // One whose name is not told may be QOR: it is waited for as long as the library does.
    if (isTcp()) limitMs = 20000;
    EXPECT_THAT(whyNotStarted(), AllOf(HasSubstr("qor-simulator.exe has ended with exit code"),
                                       HasSubstr("held by "), holder));
    EXPECT_EQ(isTcp(), err.find("note    ") != std::string::npos) << err;
}

TEST_P(QorctlStart, WhatMayBeABusyQorIsNamedSoonAndWaitedFor) {
    const Stranger stranger(station.settings);
    station.settings.executable.clear();
    station.writeSettings();
    EXPECT_THAT(toldWithin(4000),
                AllOf(ContainsRegex("note    .*: held by .*, which does not answer as QOR does"),
                      HasSubstr("cancelled with Ctrl-C")));
}

TEST_P(QorctlStart, AQorThatIsBusyIsWaitedFor) {
    startBusyQor(4000);
    const auto ended = runQorctl(words("ping"));
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, ContainsRegex("note    .*: held by .*, which does not answer"));
    qor::killAll();
}

TEST_P(QorctlStart, AQorThatAnotherProgramStartsInPlaceOfTheNamedOneIsWaitedFor) {
    char system[MAX_PATH] = "";
    GetSystemDirectoryA(system, MAX_PATH);
    station.settings.executable = std::string(system) + "\\attrib.exe";  // ends with 0 at once
    station.writeSettings();
    QorctlProcess ping(words("ping"));
    Sleep(4000);
    station.startQorByHand();
    const auto ended = ping.wait();
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("attrib.exe has ended with exit code 0\n"));
    qor::killAll();
}

TEST_P(QorctlStart, AQorThatShowsABoxIsWaitedFor) {
    const std::string caption = station.settings.titles + "-box";
    station.settings.executable.clear();
    station.script = R"({"rules":[{"match":{"nth":1},"action":{"answer":"silent","then":[)"
                     R"({"afterMs":0,"messageBox":{"caption":")" +
                     caption + R"(","text":"Go on?","type":0}}]}}]})";
    station.writeSettings();
    station.startQorByHand();
    QorctlProcess ping(words("ping"));
    HWND const box = awaitBoxOnScreen(caption);
    ASSERT_NE(nullptr, box);
    Sleep(4000);
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDOK, 0));
    const auto ended = ping.wait();
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, AllOf(HasSubstr("is open"), Not(HasSubstr("does not answer as QOR"))));
    qor::killAll();
}

TEST_P(QorctlStart, WhatIsLeftRunningWhereNobodyWaitsAnyMoreIsNamed) {
    station.script = R"({"rules":[{"match":{"nth":1},"action":{"hangMs":60000}}]})";
    station.writeSettings();
    const std::string told = toldWithin(3000);
    std::smatch found;
    ASSERT_TRUE(std::regex_search(
        told, found,
        std::regex(R"(qor-simulator\.exe \(process (\d+)\) still runs and was not told to end\n)")))
        << told;
    HANDLE const left = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, std::stoul(found[1]));
    ASSERT_NE(nullptr, left) << told;
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(left, 0));
    TerminateProcess(left, 1);
    WaitForSingleObject(left, 5000);
    CloseHandle(left);
}

// That address belongs to nobody: it is reserved for examples.
TEST_P(QorctlStartOverTcp, WhereQorIsOnAnotherMachineTheExecutableIsNoReasonNotToAskIt) {
    station.settings.executable = station.folder.pathOf("none.exe");
    station.writeSettings();
    damage("ServerIp=127.0.0.1", "ServerIp=198.51.100.7");
    limitMs = 20000;
    EXPECT_THAT(whyNotStarted(station.settingsPath),
                AllOf(HasSubstr("none.exe does not exist"), HasSubstr("QOR cannot be reached")));
    EXPECT_TRUE(fileExists(station.tracePath())) << "the library was not asked";
}

TEST_P(QorctlStart, WhatIsNoSettingsFileIsNamed) {
    EXPECT_THAT(whyNotStarted(station.folder.path()), HasSubstr(" is a folder"));
    EXPECT_THAT(err, Not(HasSubstr("window messages")));
    EXPECT_THAT(whyNotStarted(qor::executable()), HasSubstr("is no text file"));
}

TEST_P(QorctlStart, AMisspeltKeyIsNamed) {
    station.writeSettings();
    const std::string key = isTcp() ? "TcpPort" : "ServerPipeName";
    const std::string wrong = isTcp() ? "TcpPrt" : "ServerPipName";
    damage(key, wrong);
    EXPECT_THAT(whyNotStarted(station.settingsPath),
                AllOf(StartsWith(wrong + " is not read: misspelt for " + key),
                      HasSubstr("\ncheck: write " + key + " in its place")));
    EXPECT_FALSE(fileExists(station.settings.log)) << "QOR was started";
}

TEST_P(QorctlStart, AMisspeltKeyThatQorMayComeWithoutIsANoteAndTheReasonIfItDoesNot) {
    station.writeSettings();
    damage("QORexecutable", "QORexecutabl");
    const std::string finding = "QORexecutabl is not read: misspelt for QORexecutable";
    EXPECT_THAT(whyNotStarted(station.settingsPath),
                AllOf(StartsWith(finding), HasSubstr("\nalso:  "), HasSubstr("nobody is there")));
    station.startQorByHand();
    const auto ended = runQorctl(words("ping"));
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("note    " + finding));
    qor::killAll();
}

TEST_P(QorctlStart, WhatIsCommentedOutIsNotMentioned) {
    station.writeSettings();
    damage("QORexecutable", "#QORexecutable");
    EXPECT_THAT(whyNotStarted(station.settingsPath),
                AllOf(HasSubstr("nobody is there"), Not(HasSubstr("is not read"))));
    station.startQorByHand();
    const auto ended = runQorctl(words("ping"));
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Not(HasSubstr("note    ")));
    qor::killAll();
}

TEST_P(QorctlStart, ASecondOneSaysWhoIsThereAndTheFirstGoesOnUnharmed) {
    const auto watch = startWatch();
    const unsigned connects = requestsOf("KwpConnect");

    EXPECT_THAT(whyNotStarted(station.settingsPath),
                AllOf(HasSubstr("qorctl.exe (process "), HasSubstr("talks to the QOR of these")));
    EXPECT_EQ(occupied, exitCode);
    const auto second = runQorctl(words("set", {"MaxVehicleSpeed", "180"}));
    EXPECT_EQ(occupied, second.exitCode) << second.err;
    EXPECT_EQ(connects, requestsOf("KwpConnect"));

    watch->raise(CTRL_C_EVENT);
    const auto first = watch->wait();
    EXPECT_EQ(0, first.exitCode) << first.err;
    EXPECT_THAT(bytesOfFile(station.tracePath()),
                HasSubstr("QorControlFacade::QorControlFacade()"));
}

TEST_P(QorctlStart, AnotherHostIsSeenToo) {
    ASSERT_TRUE(station.start());
    const auto before = qor::running();

    EXPECT_THAT(whyNotStarted(station.settingsPath),
                isTcp() ? HasSubstr("talks to the QOR of these")
                        : HasSubstr("window \"" + station.settings.titles + "-host\": held by "));

    EXPECT_EQ(occupied, exitCode);
    if (!isTcp()) {
        EXPECT_THAT(err, HasSubstr("(process " + std::to_string(GetCurrentProcessId()) + ")"));
    }
    EXPECT_EQ(before, qor::running());
    EXPECT_TRUE(station->pingQor(1000));
    EXPECT_TRUE(station.connectEcu());
}

TEST_P(QorctlStart, OfTwoThatBeginAtOnceOneWorks) {
    station.writeSettings();
    const std::vector<std::string> more = {"EngineSpeed", "--for", "4", "--csv"};
    QorctlProcess one(words("watch", more));
    QorctlProcess other(words("watch", more));
    const auto first = one.wait();
    const auto second = other.wait();
    EXPECT_EQ(occupied, first.exitCode + second.exitCode) << first.err << second.err;
}

TEST_P(QorctlStart, ATraceThatAnotherProgramWritesIsLeftToIt) {
    const auto watch = startWatch();
    Station another(GetParam());
    another.writeSettings();
    const auto ended =
        runQorctl({"ping", another.settingsPath, "--trace", station.tracePath(), "--json"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("note    another program writes " + station.tracePath() +
                                     ", so the trace is "));
    const std::string own = json::parse(ended.out).at("trace");
    EXPECT_NE(station.tracePath(), own);
    EXPECT_THAT(bytesOfFile(own), HasSubstr("QorControlFacade::QorControlFacade()"));
    EXPECT_THAT(bytesOfFile(station.tracePath()), Not(HasSubstr("~QorControlFacade()")));
    watch->raise(CTRL_C_EVENT);
    EXPECT_EQ(0, watch->wait().exitCode);
    EXPECT_THAT(bytesOfFile(station.tracePath()), HasSubstr("~QorControlFacade()"));
}

}  // namespace
