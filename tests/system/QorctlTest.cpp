// The command-line host as a process: what it prints, how it fails, its exit codes.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "qorcontrol/Version.h"
#include "QorctlScene.h"

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class Qorctl : public QorctlScene {
protected:
    /// The requests of the station in order, without the questions for QOR's and the ECU's state.
    std::vector<std::string> requestKinds() const {
        std::vector<std::string> kinds;
        for (const std::string& request : station.requests()) {
            const std::string kind = request.substr(0, request.find(' '));
            if (kind != "Ping") kinds.push_back(kind);
        }
        return kinds;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Qorctl, everyTransport(), transportName);

TEST_P(Qorctl, AValueIsAllThatStandardOutputGets) {
    const auto ended = run("get", {"MaxVehicleSpeed", "PedalCurve"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_EQ("MaxVehicleSpeed: 210\nPedalCurve: 0 4 14 38 69 100\n  second: 0 10 25 50 75 100\n",
              ended.out);
    EXPECT_THAT(ended.err, HasSubstr("4 of 4 steps ok"));
}

TEST_P(Qorctl, TheEcuIsConnectedBeforeAndLetGoBehindAnOperation) {
    run("get", {"MaxVehicleSpeed"});

    EXPECT_THAT(requestKinds(),
                ElementsAre("KwpConnect", "GetParamInfo", "DirectCtrl", "KwpConnect", "Shutdown"));
}

TEST_P(Qorctl, WithoutAConnectOnlyTheOperationItselfIsDone) {
    const auto ended = run("get", {"MaxVehicleSpeed", "--no-connect"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(requestKinds(),
                ElementsAre("GetParamInfo", "DirectCtrl", "KwpConnect", "Shutdown"));
}

TEST_P(Qorctl, AFailureTellsItsCauseWhatToCheckAndWhereTheTraceIs) {
    const auto ended = run("get", {"MaxVehicleSpeed", "Nobody"});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_EQ("MaxVehicleSpeed: 210\n", ended.out);
    EXPECT_THAT(ended.err, HasSubstr("  not read: Nobody\n"
                                     "        cause: unknownName: QOR knows no parameter of that "
                                     "name.\n"
                                     "        check: Compare the spelling"));
    EXPECT_THAT(ended.err, HasSubstr("\n        trace: " + station.tracePath() + "\n"));
    EXPECT_THAT(bytesOfFile(station.tracePath()), HasSubstr("failed on param: Nobody"));
}

TEST_P(Qorctl, JsonIsOneObjectAlsoForAFailure) {
    const auto ended = run("set", {"MaxVehicleSpeed", "1000", "--json"});

    EXPECT_EQ(1, ended.exitCode);
    const auto object = nlohmann::json::parse(ended.out);
    EXPECT_EQ("set", object.at("command"));
    EXPECT_EQ(false, object.at("ok"));
    EXPECT_EQ(4u, object.at("steps").size());
    EXPECT_THAT(object.at("steps").at(2).at("text").get<std::string>(),
                HasSubstr("was not taken by QOR"));
    EXPECT_THAT(object.at("log").back().get<std::string>(),
                StartsWith("FAILED SET-param(MaxVehicleSpeed)"));
}

TEST_P(Qorctl, ConnectionSettingsTravelFromTheCommandLine) {
    const auto ended =
        run("connect", {"--type", "alternative", "--protocol", "3", "--request-id", "0x7E0",
                        "--address-byte1", "0x11", "--no-final-flag", "--refresh", "150"});

    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("CONNECT-type(3): [3 1 10400 125000 150 0x000007E0 "
                                     "0xFFFFFFFF 17 255 ]"));
}

TEST_P(Qorctl, AKwpExchangeThatTheEcuRefusesShowsItsAnswerAndFails) {
    const auto ended = run("kwp", {"0x27", "02", "00 0A"});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_EQ("7F 27 35\n", ended.out);
    EXPECT_THAT(ended.err, HasSubstr("the ECU reports a failure: 7F 27 35"));
    EXPECT_THAT(station.requests(), Contains("ExecKwp channel=1 27 [02 00 0A] t=1000 failed=0"));
}

TEST_P(Qorctl, WithoutASettingsFileItSaysSo) {
    const auto ended = runQorctl({"ping", station.settingsPath, "--trace", station.tracePath()});

    EXPECT_EQ(1, ended.exitCode);
    EXPECT_THAT(ended.err, HasSubstr("Specified settings file"));
    EXPECT_THAT(ended.err, HasSubstr(station.settingsPath));
}

using QorctlWords = testing::TestWithParam<std::vector<std::string>>;

// Nothing of these starts QOR: the settings are those of nobody.
TEST_P(QorctlWords, ThatAreNoCommandLineEndWithTwoAndAReason) {
    const auto ended = runQorctl(GetParam());

    EXPECT_EQ(2, ended.exitCode) << ended.err;
    EXPECT_EQ("", ended.out);
    EXPECT_THAT(ended.err, Not(IsEmpty()));
    EXPECT_THAT(ended.err, Not(HasSubstr("transport ")));
}

INSTANTIATE_TEST_SUITE_P(
    Wrong, QorctlWords,
    testing::Values(std::vector<std::string>{}, std::vector<std::string>{"fly"},
                    std::vector<std::string>{"get"}, std::vector<std::string>{"get", "none.ini"},
                    std::vector<std::string>{"set", "none.ini", "Name", "many"},
                    std::vector<std::string>{"kwp", "none.ini", "0x27", "0G"},
                    std::vector<std::string>{"kwp", "none.ini", "0x27", "012"},
                    std::vector<std::string>{"kwp", "none.ini", "1A"},
                    std::vector<std::string>{"kwp", "none.ini", "282"},
                    std::vector<std::string>{"send-can", "none.ini", "1", "2", "xy"},
                    std::vector<std::string>{"connect", "none.ini", "--protocol", "9"},
                    std::vector<std::string>{"open-model", "none.ini", "m", "--extra", "=x"},
                    std::vector<std::string>{"list", "none.ini", "--names", "no such file.txt"},
                    std::vector<std::string>{"ping", "none.ini", "--answer-boxes", "perhaps"},
                    std::vector<std::string>{"doctor", "none.ini", "--start", "--host", "h.exe"},
                    std::vector<std::string>{"get", "none.ini", "Name", "--timeout", "0"},
                    std::vector<std::string>{"get", "none.ini", "Name", "--trace", "x.txt"}));

TEST(QorctlVersion, IsThatOfTheProgramAndOfTheLoadedLibrary) {
    const auto ended = runQorctl({"--version"});

    EXPECT_EQ(0, ended.exitCode);
    EXPECT_EQ("", ended.err);
    EXPECT_THAT(ended.out, StartsWith("qorctl " QOR_VERSION_TEXT
                                      "\nQorControlFacade.dll " QOR_VERSION_TEXT ".0 ("));
    EXPECT_THAT(ended.out, EndsWith("\\QorControlFacade.dll)\n"));
}

TEST(QorctlHints, NameTheNearestCommandAndHowToWriteANumber) {
    const auto command = runQorctl({"gett", "none.ini", "Name"});
    EXPECT_EQ(2, command.exitCode);
    EXPECT_THAT(command.err, HasSubstr("there is no command \"gett\"; did you mean \"get\"?"));
    const auto number = runQorctl({"get", "none.ini", "Name", "--timeout", "abc"});
    EXPECT_EQ(2, number.exitCode);
    EXPECT_THAT(number.err, HasSubstr("--timeout: abc is not a number: write 26 or 0x1A"));
    const auto service = runQorctl({"kwp", "none.ini", "010", "90"});
    EXPECT_EQ(2, service.exitCode);
    EXPECT_THAT(service.err, HasSubstr("SERVICE: 010 is ambiguous: write 10 (decimal) or 0x10"));
    const auto message = runQorctl({"send-can", "none.ini", "0x201", "0102"});
    EXPECT_EQ(2, message.exitCode);
    EXPECT_THAT(message.err, HasSubstr("SECOND: 0102 is ambiguous"));
}

TEST(QorctlHelp, IsThereForEveryCommandWithAnExample) {
    const auto ended = runQorctl({"--help"});
    EXPECT_EQ(0, ended.exitCode);
    std::istringstream lines(ended.out);
    unsigned int commands = 0;
    const std::regex row("  ([a-z][a-z-]*) +[A-Z].*");
    for (std::string line; std::getline(lines, line);) {
        std::smatch found;
        if (!std::regex_match(line, found, row)) continue;
        ++commands;
        const auto help = runQorctl({found[1], "--help"});
        EXPECT_EQ(0, help.exitCode) << found[1];
        EXPECT_THAT(help.out, AnyOf(HasSubstr("Example"), HasSubstr("Examples"))) << found[1];
        EXPECT_THAT(help.out, HasSubstr("SETTINGS")) << found[1];
    }
    EXPECT_GE(commands, 22u);
}

}  // namespace
