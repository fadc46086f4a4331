#include "doctor/FilesCheck.h"

#include <gmock/gmock.h>

#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::HasSubstr;

namespace {

ULONGLONG writtenAt(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
    return static_cast<ULONGLONG>(data.ftLastWriteTime.dwHighDateTime) << 32 |
           data.ftLastWriteTime.dwLowDateTime;
}

TEST(WriteAccessTo, ANewFileLeavesNone) {
    const TempFolder folder;
    const auto access = WriteAccess::to(folder.pathOf("new.log"));
    EXPECT_TRUE(access.isPossible) << access.reason;
    EXPECT_FALSE(access.fileExists);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(WriteAccessTo, AnOldFileLeavesItAsItWas) {
    const TempFolder folder;
    const std::string path = folder.write("old.log", "what the last host wrote");
    const ULONGLONG time = writtenAt(path);
    Sleep(50);
    const auto access = WriteAccess::to(path);
    EXPECT_TRUE(access.isPossible) << access.reason;
    EXPECT_TRUE(access.fileExists);
    EXPECT_EQ("what the last host wrote", bytesOfFile(path));
    EXPECT_EQ(time, writtenAt(path));
}

TEST(WriteAccessTo, WhatCannotBeWrittenHasAReason) {
    const TempFolder folder;
    EXPECT_EQ("it is a folder", WriteAccess::to(folder.path()).reason);
    const auto nowhere = WriteAccess::to(folder.pathOf("none\\new.log"));
    EXPECT_FALSE(nowhere.isPossible);
    EXPECT_THAT(nowhere.reason, HasSubstr("(error 3)"));

    const std::string path = folder.write("held.log", "x");
    HANDLE const held =
        CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const auto shut = WriteAccess::to(path);
    CloseHandle(held);
    EXPECT_FALSE(shut.isPossible);
    EXPECT_TRUE(shut.fileExists);
    EXPECT_THAT(shut.reason, HasSubstr("(error 32)"));
}

TEST(FilesCheck, ATraceOrAnExportFileThatCannotBeWrittenIsAWarning) {
    WriteAccess access;
    access.reason = "locked";
    EXPECT_EQ(Status::warning, checkTraceFile("h.log", access).status);
    EXPECT_EQ("h.log cannot be written: locked", checkTraceFile("h.log", access).what);
    EXPECT_EQ(Status::warning, checkExportFile("export.file", "x", access).status);
    access.isPossible = true;
    EXPECT_EQ(Status::ok, checkTraceFile("h.log", access).status);
    EXPECT_EQ(Status::ok, checkExportFile("export.file", "x", access).status);
}

TEST(FilesCheck, TraceSettingsThatCannotBeReadOrSilenceAreWarnings) {
    const TempFolder folder;
    const auto check = [](const std::string& path) {
        return checkTraceSettings("t", TraceSettingsFacts::gather(path));
    };
    EXPECT_EQ(Status::ok, check(folder.pathOf("none.cfg")).status);
    EXPECT_EQ(Status::warning, check(folder.path()).status);
    EXPECT_EQ(Status::ok, check(folder.write("a.cfg", "dt\ntc\n#notrace\n")).status);
    EXPECT_EQ(Status::warning, check(folder.write("b.cfg", "dt\nnotrace\n")).status);
    EXPECT_EQ(Status::warning, check(folder.write("c.cfg", "include=wire\n")).status);
}

}  // namespace
