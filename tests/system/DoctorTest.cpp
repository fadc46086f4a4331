// "qorctl doctor" as a process: what it finds in a healthy station and in each kind of damage, and
// that it changes nothing.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <set>

#include "QorctlProcess.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Stranger.h"
#include "Waiting.h"

using testing::AnyOf;
using testing::ContainsRegex;
using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

using nlohmann::json;

constexpr int wouldWork = 0;
constexpr int wouldNotWork = 3;

class Doctor : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    int exitCode = -1;

    bool isTcp() const { return GetParam() == Transport::tcp; }

    /// Writes the settings, one text replaced by another, and looks at them.
    json diagnose(const std::vector<std::string>& more = {}, const std::string& from = {},
                  const std::string& to = {}) {
        station.writeSettings();
        damage(from, to);
        return diagnoseAsItIs(more);
    }
    /// The findings; their exit code and the whole verdict belong together.
    json diagnoseAsItIs(const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"doctor", station.settingsPath, "--json", "--trace",
                                          station.tracePath()};
        words.insert(words.end(), more.begin(), more.end());
        const auto ended = runQorctl(words);
        exitCode = ended.exitCode;
        const json object = json::parse(ended.out, nullptr, false);
        if (object.is_discarded()) {
            ADD_FAILURE() << ended.out << ended.err;
            return json::array();
        }
        EXPECT_EQ(exitCode == wouldWork, object.at("ok"));
        return object.at("findings");
    }
    void damage(const std::string& from, const std::string& to) const {
        if (from.empty()) return;
        std::string text = bytesOfFile(station.settingsPath);
        const std::size_t place = text.find(from);
        ASSERT_NE(std::string::npos, place) << from;
        std::ofstream(station.settingsPath, std::ios::binary)
            << text.replace(place, from.size(), to);
    }
    /// The kinds of requests that QOR has got.
    std::set<std::string> requestKinds() const {
        std::set<std::string> kinds;
        for (const std::string& request : station.requests())
            kinds.insert(request.substr(0, request.find(' ')));
        return kinds;
    }
    std::vector<std::string> filesOfStation() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(station.folder.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Doctor, everyTransport(), transportName);

/// The finding of that id, null if there is none.
json finding(const json& findings, const std::string& id) {
    for (const json& one : findings)
        if (one.at("id") == id) return one;
    return nullptr;
}

std::string statusOf(const json& findings, const std::string& id) {
    const json one = finding(findings, id);
    return one.is_null() ? "none in " + findings.dump() : one.at("status").get<std::string>();
}

/// The ids of all problems, each of which must have a remedy.
std::vector<std::string> problemsIn(const json& findings) {
    std::vector<std::string> ids;
    for (const json& one : findings) {
        EXPECT_EQ(one.at("status") == "ok", one.at("remedy") == "") << one;
        if (one.at("status") == "problem") ids.push_back(one.at("id"));
    }
    return ids;
}

/// It is linked to the class.
std::string pathOfThisTest() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

/// The head of a program for the processor of that number.
std::string programFor(const std::string& machine) {
    return "MZ" + std::string(0x3A, '\0') + std::string("\x40\0\0\0PE\0\0", 8) + machine +
           std::string(16, '\0') + std::string("\x02\x01", 2) + std::string(200, '\0');
}

TEST_P(Doctor, AHealthyStationWouldWorkAndIsLeftAsItWas) {
    station.writeSettings();
    const auto before = filesOfStation();

    const json findings = diagnose();

    EXPECT_EQ(wouldWork, exitCode) << findings;
    EXPECT_THAT(problemsIn(findings), IsEmpty());
    for (const char* const id :
         {"this.program", "this.QorControlFacade.dll", "this.libstdc++-6.dll",
          "this.QorControlC.dll", "trace.file", "export.file", "settings.file", "settings.TcpPort",
          "codepage", "executable.file", "executable.program", "qor.place"})
        EXPECT_EQ("ok", statusOf(findings, id)) << id;
    EXPECT_THAT(finding(findings, "qor.place").at("what"), HasSubstr("so a host starts QOR"));
    EXPECT_EQ(before, filesOfStation()) << "QOR was started";
}

TEST_P(Doctor, AQorThatRunsIsAskedAndGoesOn) {
    station.writeSettings();
    station.startQorByHand();

    const json findings = diagnoseAsItIs();

    EXPECT_EQ(wouldWork, exitCode) << findings;
    EXPECT_EQ("ok", statusOf(findings, "qor.place"));
    EXPECT_THAT(finding(findings, "qor.place").at("what"), HasSubstr("held by"));
    if (!isTcp()) {
        EXPECT_THAT(finding(findings, "qor.place").at("what"), HasSubstr("qor-simulator.exe"));
    }
    EXPECT_THAT(statusOf(findings, "qor.answer"), AnyOf("ok", "warning"));
    EXPECT_THAT(finding(findings, "qor.answer").at("what"),
                ContainsRegex("5 of 5 pings answered, in ms: \\d+\\.\\d, "));
    EXPECT_THAT(qor::running(), SizeIs(1));
    EXPECT_THAT(requestKinds(), Each(AnyOf("Ping", "KwpConnect", isTcp() ? "GetParamInfo" : "")));
    for (const std::string& request : station.requests())
        EXPECT_THAT(request,
                    AnyOf(HasSubstr("Ping"), HasSubstr("mode=2"), HasSubstr("'qorctl.doctor.")))
            << "only questions";
    qor::killAll();
}

TEST_P(Doctor, AHostFindsAQorThatTheDoctorHasAsked) {
    station.writeSettings();
    station.startQorByHand();
    diagnoseAsItIs();
    diagnoseAsItIs();
    EXPECT_EQ(wouldWork, exitCode);

    station.construct();
    EXPECT_TRUE(station->pingQor(5000));
    EXPECT_TRUE(station.connectEcu());
    EXPECT_THAT(qor::running(), SizeIs(1));
}

TEST_P(Doctor, ToldToItStartsQorAndEndsIt) {
    const json findings = diagnose({"--start"});

    EXPECT_EQ(wouldWork, exitCode) << findings;
    EXPECT_EQ("ok", statusOf(findings, "qor.start"));
    EXPECT_THAT(finding(findings, "qor.answer").at("what"), HasSubstr("5 of 5 pings"));
    EXPECT_THAT(requestKinds(), testing::Contains("Shutdown"));
}

TEST_P(Doctor, AStartThatFailsIsAProblemWithWhatWasSeen) {
    station.settings.model = station.folder.pathOf("none.json");  // QOR's stand-in ends with 2

    const json findings = diagnose({"--start"});

    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_EQ("problem", statusOf(findings, "qor.start"));
    EXPECT_THAT(finding(findings, "qor.start").at("what"),
                EndsWith("qor-simulator.exe has ended with exit code 2"));
}

TEST_P(Doctor, ToldToStartItLeavesAQorThatRuns) {
    station.writeSettings();
    station.startQorByHand();
    const json findings = diagnoseAsItIs({"--start"});
    EXPECT_EQ(wouldWork, exitCode) << findings;
    EXPECT_TRUE(finding(findings, "qor.start").is_null());
    EXPECT_THAT(qor::running(), SizeIs(1));
    qor::killAll();
}

TEST_P(Doctor, AQorThatWorksForAHostIsNotDisturbed) {
    ASSERT_TRUE(station.start());
    const auto before = qor::running();

    const json findings = diagnoseAsItIs();

    // Over window messages the answers would go to the host that is there; over TCP the two would
    // throw each other out.
    EXPECT_EQ(wouldNotWork, exitCode) << findings;
    EXPECT_EQ("problem", statusOf(findings, "qor.client"));
    EXPECT_TRUE(finding(findings, "qor.answer").is_null());
    EXPECT_EQ(before, qor::running());
    EXPECT_TRUE(station->pingQor(1000));
}

TEST_P(Doctor, AMisspeltKeyIsFound) {
    const std::string key = isTcp() ? "TcpPort" : "ServerPipeName";
    const std::string wrong = isTcp() ? "TcpPrt" : "ServerPipName";

    const json findings = diagnose({}, key, wrong);

    EXPECT_EQ(wouldNotWork, exitCode);
    const json misspelt = finding(findings, "settings.misspelt." + wrong);
    ASSERT_EQ("problem", statusOf(findings, "settings.misspelt." + wrong));
    EXPECT_EQ("write " + key + " in its place", misspelt.at("remedy"));
    EXPECT_EQ("problem", statusOf(findings, "settings." + key));
}

TEST_P(Doctor, AKeyInTheWrongSectionIsFound) {
    const json findings = diagnose({}, "[CommonSettings]\n", "[CommonSettings]\n[Common]\n");
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_EQ("problem", statusOf(findings, "settings.elsewhere.UseTcp"));
}

TEST_P(Doctor, AMissingExecutableIsFound) {
    station.settings.executable = station.folder.pathOf("none.exe");
    const json findings = diagnose();
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_THAT(problemsIn(findings), testing::ElementsAre("executable.file"));
}

TEST_P(Doctor, AnExecutableThatIsNoneOrFor64BitsIsFound) {
    station.settings.executable = station.folder.write("qor.exe", "#!/bin/sh\n");
    EXPECT_THAT(problemsIn(diagnose()), testing::ElementsAre("executable.program"));
    EXPECT_EQ(wouldNotWork, exitCode);

    BOOL is64BitSystem = FALSE;
    IsWow64Process(GetCurrentProcess(), &is64BitSystem);
    station.folder.write("qor.exe", programFor("\x64\x86"));
    const json findings = diagnose();
    EXPECT_THAT(finding(findings, "executable.program").at("what"), HasSubstr("64-bit"));
    EXPECT_EQ(is64BitSystem ? wouldWork : wouldNotWork, exitCode);
}

TEST_P(Doctor, WhereNobodyStartsQorItMustRun) {
    station.settings.executable.clear();
    const json findings = diagnose();
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_THAT(problemsIn(findings), testing::ElementsAre("qor.place"));
    EXPECT_THAT(finding(findings, "qor.place").at("what"), HasSubstr("nobody is there"));
}

TEST_P(Doctor, AForeignProgramInQorsPlaceIsFound) {
    const Stranger stranger(station.settings);

    const json findings = diagnose({"--timeout", "200"});

    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_EQ("problem", statusOf(findings, "qor.place")) << findings;
    const std::string what = finding(findings, "qor.place").at("what");
    // Wine does not tell whose a port is.
    const std::string us = std::to_string(GetCurrentProcessId());
    EXPECT_THAT(what, AnyOf(HasSubstr("process " + us), HasSubstr("does not name")));
    if (!isTcp()) {
        EXPECT_THAT(what, HasSubstr("process " + us));
    }
    EXPECT_THAT(what, HasSubstr("does not answer as QOR does"));
    EXPECT_FALSE(fileExists(station.settings.log)) << "QOR was started";
}

TEST_P(Doctor, AQorThatDoesNotAnswerIsFound) {
    station.script = R"({"rules":[{"match":{"id":0},"action":)" + silence(GetParam(), 400) + "}]}";
    station.writeSettings();
    station.startQorByHand();

    const json findings = diagnoseAsItIs({"--timeout", "100"});

    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_EQ("problem", statusOf(findings, "qor.place")) << findings;
    EXPECT_EQ("problem", statusOf(findings, "qor.answer"));
    EXPECT_THAT(qor::running(), SizeIs(1));
    qor::killAll();
}

TEST_P(Doctor, ATraceThatCannotBeWrittenIsFound) {
    CreateDirectoryA(station.tracePath().c_str(), nullptr);
    const json findings = diagnose();
    EXPECT_EQ(wouldWork, exitCode) << findings;
    EXPECT_EQ("warning", statusOf(findings, "trace.file"));
}

TEST_P(Doctor, AnOldTraceKeepsWhatItHolds) {
    std::ofstream(station.tracePath()) << "of the last host";
    diagnose();
    EXPECT_EQ(wouldWork, exitCode);
    EXPECT_EQ("of the last host", bytesOfFile(station.tracePath()));
}

TEST_P(Doctor, AMissingSettingsFileIsFound) {
    const json findings = diagnoseAsItIs();
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_THAT(problemsIn(findings), testing::ElementsAre("settings.file"));
}

TEST_P(Doctor, AnotherHostIsLookedAtInItsPlace) {
    station.settings.executable = "qor.exe";  // beside that host
    station.folder.write("qor.exe", programFor("\x4C\x01"));
    station.folder.write("other.exe", programFor("\x64\x86"));
    const json large = diagnose({"--host", station.folder.pathOf("other.exe")});
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_THAT(problemsIn(large), testing::ElementsAre("host.program"));
    EXPECT_EQ("ok", statusOf(large, "executable.file"));

    station.folder.write("other.exe", programFor("\x4C\x01"));
    const json small = diagnose({"--host", station.folder.pathOf("other.exe")});
    EXPECT_EQ(wouldWork, exitCode);
    EXPECT_EQ("warning", statusOf(small, "host.QorControlC.dll")) << "loaded when it runs";
    EXPECT_TRUE(finding(small, "host.QorControlFacade.dll").is_null());
}

TEST_P(Doctor, AHostOfTheClassNeedsItsDllsBesideIt) {
    const std::string program = pathOfThisTest();
    const std::string folder = program.substr(0, program.rfind('\\') + 1);
    const std::string host = station.folder.write("other.exe", bytesOfFile(program));
    const std::vector<std::string> dlls = {"QorControlFacade.dll", "libstdc++-6.dll",
                                           "libgcc_s_dw2-1.dll", "libwinpthread-1.dll"};
    const json bare = diagnose({"--host", host});
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_EQ(dlls.size(), problemsIn(bare).size());
    EXPECT_TRUE(finding(bare, "host.QorControlC.dll").is_null());

    for (const std::string& dll : dlls) station.folder.write(dll, bytesOfFile(folder + dll));
    const json whole = diagnose({"--host", host});
    EXPECT_EQ(wouldWork, exitCode) << whole;
    for (const std::string& dll : dlls) EXPECT_EQ("ok", statusOf(whole, "host." + dll));
}

TEST_P(Doctor, AMarkThatHidesTheFirstSectionIsFound) {
    const json hidden = diagnose({}, "[CommonSettings]", "\xEF\xBB\xBF[CommonSettings]");
    EXPECT_EQ(wouldNotWork, exitCode);
    EXPECT_EQ("problem", statusOf(hidden, "settings.file"));
    const json harmless = diagnose({}, "[CommonSettings]", "\xEF\xBB\xBF;\n[CommonSettings]");
    EXPECT_EQ(wouldWork, exitCode);
    EXPECT_EQ("warning", statusOf(harmless, "settings.file"));
}

TEST_P(Doctor, AnotherTransportIsLookedAtWithoutAChangeOfTheFile) {
    station.writeSettings();
    const auto before = filesOfStation();
    const std::string text = bytesOfFile(station.settingsPath);

    const json findings = diagnoseAsItIs({"--transport", isTcp() ? "window" : "tcp"});

    EXPECT_EQ(wouldWork, exitCode);
    EXPECT_THAT(finding(findings, "settings.UseTcp").at("what"),
                HasSubstr(isTcp() ? ": window messages" : ": TCP"));
    EXPECT_EQ(before, filesOfStation());
    EXPECT_EQ(text, bytesOfFile(station.settingsPath));
}

TEST_P(Doctor, TheTextHasALineForEachFindingAndTheProblemsLast) {
    station.settings.executable = station.folder.pathOf("none.exe");
    const json findings = diagnose();
    const auto ended = runQorctl({"doctor", station.settingsPath, "--trace", station.tracePath()});

    EXPECT_EQ(wouldNotWork, ended.exitCode);
    EXPECT_EQ("", ended.err);
    std::vector<std::string> lines;
    std::istringstream text(ended.out);
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    ASSERT_EQ(findings.size() + 2, lines.size()) << ended.out;  // a remedy, and the summary
    EXPECT_THAT(lines[lines.size() - 3], testing::StartsWith("problem  executable.file "));
    EXPECT_THAT(lines[lines.size() - 2], ContainsRegex("^ +-> correct QORexecutable"));
    EXPECT_EQ("A host would not work with these settings: 1 problem, 0 warnings.", lines.back());
}

}  // namespace
