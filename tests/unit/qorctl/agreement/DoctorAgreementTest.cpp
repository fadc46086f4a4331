// What the doctor knows of the library is what the library does.

#include <gmock/gmock.h>

#include "client/ClientSettings.h"
#include "client/ExportFiles.h"
#include "common/Paths.h"
#include "doctor/FilesCheck.h"
#include "doctor/HostPlace.h"
#include "doctor/SettingsFacts.h"
#include "HostPaths.h"
#include "support/TempFolder.h"
#include "trace/TraceSettings.h"

using namespace qorctl::doctor;

namespace {

class DoctorAgreement : public testing::Test {
protected:
    TempFolder folder;

    std::string fileWith(const std::string& lines) {
        return folder.write("qor.ini", "[" + std::string(settingsSection) + "]\r\n" + lines);
    }
    /// Both read the file; what they make of it must be the same.
    void expectSame(const std::string& lines) {
        const std::string path = fileWith(lines);
        const auto library = ClientSettings::read(path);
        const auto doctor = SettingsFacts::read(path);
        EXPECT_EQ(library.executable, doctor["QORexecutable"].text.substr(0, maxPathChars));
        EXPECT_EQ(library.clientPipeName, doctor["ClientPipeName"].text.substr(0, maxValueChars));
        EXPECT_EQ(library.serverPipeName, doctor["ServerPipeName"].text.substr(0, maxValueChars));
        EXPECT_EQ(library.serverIp, doctor["ServerIp"].text.substr(0, maxValueChars));
        EXPECT_EQ(library.tcpPort, doctor["TcpPort"].number);
        EXPECT_EQ(library.useTcp, doctor.usesTcp());
        EXPECT_EQ(library.initMfc, doctor["InitMFC"].number == 1);
    }
};

/// All that the library reads, in one text.
std::string shown(const ClientSettings& settings) {
    return settings.executable + "|" + settings.clientPipeName + "|" + settings.serverPipeName +
           "|" + settings.serverIp + "|" + std::to_string(settings.tcpPort) + "|" +
           std::to_string(settings.useTcp) + "|" + std::to_string(settings.initMfc);
}

TEST_F(DoctorAgreement, OddValuesAreReadTheSame) {
    for (const char* const text :
         {"", "x", "\"quoted\"", "  blanks  ", "a ; comment", "true", "TRUE", "'true'", "1", "0",
          "-1", "5000", "5000x", "0x1388", "99999999999", "\xFC\xC3\xBC"}) {
        std::string lines;
        for (const SettingsKey& key : settingsKeys())
            lines += std::string(key.name) + "=" + text + "\r\n";
        SCOPED_TRACE(text);
        expectSame(lines);
    }
    expectSame("");
    expectSame("QORexecutable=" + std::string(12000, 'q') +
               "\r\nServerPipeName=" + std::string(12000, 's') + "\r\n");
    expectSame("TcpPort=1\r\nTcpPort=2\r\nTCPPORT=3\r\n");
    expectSame("[Other]\r\nTcpPort=1\r\n[COMMONSETTINGS]\r\nTcpPort=2\r\n");
}

TEST_F(DoctorAgreement, EachKeyOfTheTableIsReadByTheLibraryInAnyCase) {
    const std::string none = shown(ClientSettings::read(fileWith("")));
    for (const SettingsKey& key : settingsKeys()) {
        const std::string name = key.name;
        const std::string value = name == "UseTcp" ? "true" : "7";
        EXPECT_NE(none, shown(ClientSettings::read(fileWith(name + "=" + value + "\r\n")))) << name;
    }
}

TEST_F(DoctorAgreement, TheLibraryReadsNoOtherKeys) {
    const std::string source = bytesOfFile(CLIENT_SETTINGS_SOURCE);
    std::size_t reads = 0;
    for (const std::string call : {"readText(path, \"", "readNumber(path, \""})
        for (auto at = source.find(call); at != std::string::npos; at = source.find(call, at + 1))
            ++reads;
    EXPECT_EQ(settingsKeys().size(), reads);
}

TEST_F(DoctorAgreement, AMissingNumberCountsTheSame) {
    const auto doctor = SettingsFacts::read(fileWith(""));
    for (const SettingsKey& key : settingsKeys()) {
        const unsigned expected = key.isNumber ? static_cast<unsigned>(key.absent) : 0;
        EXPECT_EQ(expected, doctor[key.name].number) << key.name;
    }
    EXPECT_EQ(ClientSettings::maxValueChars, maxValueChars);
    EXPECT_EQ(ClientSettings::maxLaunchChars, maxPathChars);
}

TEST_F(DoctorAgreement, PathsAreResolvedTheSame) {
    HostPlace host;
    host.program = qorctl::paths::ofThisProgram();
    for (const std::string path :
         {"q.exe", "bin\\q.exe", "..\\q.exe", "c:\\x\\q.exe", "c:q.exe", "\\q.exe", "/home/q.exe",
          "\\\\server\\share\\q.exe", "", ".", "a b\\q"})
        EXPECT_EQ(common::resolveAgainstExecutable(path), host.resolved(path)) << path;
    const std::string endless(3000, 'x');
    EXPECT_EQ(common::resolveAgainstExecutable(endless), host.resolved(endless));
}

TEST_F(DoctorAgreement, TheExportFilesAreTheLibrarys) {
    EXPECT_STREQ(exportfiles::exportTarget, exportPath);
    EXPECT_STREQ(exportfiles::addExportTarget, addExportPath);
}

/// Whether the library's trace would say nothing after these lines, whatever the category.
bool librarySilencedBy(const std::vector<std::string>& lines) {
    tracelog::TraceSettings settings;
    for (const std::string& line : lines) {
        tracelog::TraceSettings::FileRequest file;
        settings.applyLine(line + "\n", file);
    }
    return !settings.enabled || !settings.passesModule("");
}

TEST_F(DoctorAgreement, WhatSilencesTheTraceIsTheSame) {
    for (const char* const line : {"",
                                   "dt",
                                   "notrace",
                                   "# notrace",
                                   " notrace",
                                   "xnotracex",
                                   "#notrace",
                                   "include=a",
                                   "include=",
                                   "include= ",
                                   "include",
                                   "include=,",
                                   "include=outcome",
                                   "include=dtc",
                                   "include=nid",
                                   "exclude=a",
                                   "exclude=",
                                   "ts=7",
                                   "tl=5",
                                   "tid notrace",
                                   "tfr=include"}) {
        EXPECT_EQ(librarySilencedBy({line}), TraceSettingsFacts::silences(line)) << line;
        EXPECT_EQ(librarySilencedBy({"dt", line}),
                  TraceSettingsFacts::silences(std::string("dt\n") + line))
            << line;
    }
}

}  // namespace
