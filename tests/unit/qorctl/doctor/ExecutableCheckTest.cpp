#include "doctor/ExecutableCheck.h"

#include <gmock/gmock.h>

#include "Found.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::HasSubstr;

namespace {

class ExecutableCheck : public testing::Test {
protected:
    TempFolder folder;
    HostPlace host{folder.pathOf("host.exe"), folder.pathOf("host.log"), true};

    Findings check(const std::string& written) {
        return checkExecutable(ExecutableFacts::gather(written, host));
    }
};

std::string thisProgram() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

TEST_F(ExecutableCheck, AProgramOfThisMachineWillDo) {
    const auto findings = check(thisProgram());
    EXPECT_EQ(Finding::ok("executable.file", thisProgram()).what,
              found(findings, "executable.file").what);
    EXPECT_EQ(Status::ok, found(findings, "executable.program").status);
    EXPECT_EQ("32-bit Windows program", found(findings, "executable.program").what);
}

TEST_F(ExecutableCheck, APathWithoutADriveGoesByTheHostsFolder) {
    CreateDirectoryA(folder.pathOf("bin").c_str(), nullptr);
    CopyFileA(thisProgram().c_str(), folder.pathOf("bin\\q.exe").c_str(), FALSE);
    const Finding file = found(check("bin\\q.exe"), "executable.file");
    EXPECT_EQ(Status::ok, file.status);
    EXPECT_EQ(folder.pathOf("bin\\q.exe") + " (from \"bin\\q.exe\")", file.what);
}

TEST_F(ExecutableCheck, AMissingFileIsAProblemWithAFittingRemedy) {
    EXPECT_EQ(Status::problem, found(check("none.exe"), "executable.file").status);
    EXPECT_FALSE(isFound(check("none.exe"), "executable.program"));
    EXPECT_THAT(found(check("\\\\server\\q.exe"), "executable.file").remedy,
                HasSubstr("drive letter"));
    EXPECT_THAT(found(check("q.exe ; QOR"), "executable.file").remedy, HasSubstr("comment"));
    folder.write("q.exe", "MZ");
    EXPECT_THAT(found(check("q"), "executable.file").remedy, HasSubstr(".exe"));
    EXPECT_THAT(found(check("."), "executable.file").what, HasSubstr("is a folder"));
}

TEST_F(ExecutableCheck, ABatchFileCanBeStarted) {
    folder.write("q.Bat", "start qor.exe\n");
    EXPECT_EQ(Status::warning, found(check("q.Bat"), "executable.program").status);
}

TEST_F(ExecutableCheck, WhatCannotBeStartedIsAProblem) {
    folder.write("q.exe", "#!/bin/sh\n");
    EXPECT_EQ(Status::problem, found(check("q.exe"), "executable.program").status);
    EXPECT_EQ("is no Windows program", found(check("q.exe"), "executable.program").what);
    folder.write("cut.exe", "MZ");
    EXPECT_THAT(found(check("cut.exe"), "executable.program").what, HasSubstr("cut off"));
}

TEST_F(ExecutableCheck, A64BitProgramWantsASystemThatRunsIt) {
    ExecutableFacts facts;
    facts.written = facts.resolved = "c:\\q.exe";
    facts.file = ExecutableFacts::File::readable;
    facts.program = {ProgramFile::Kind::program, ProgramFile::machine64};
    facts.systemRuns64Bit = false;
    EXPECT_EQ(Status::problem, found(checkExecutable(facts), "executable.program").status);
    facts.systemRuns64Bit = true;
    EXPECT_EQ(Status::ok, found(checkExecutable(facts), "executable.program").status);
    facts.program.machine = 0xAA64;
    EXPECT_EQ(Status::problem, found(checkExecutable(facts), "executable.program").status);
}

TEST_F(ExecutableCheck, WithoutANamedOneSomebodyElseStartsQor) {
    const auto findings = check("");
    ASSERT_EQ(1u, findings.size());
    EXPECT_EQ(Status::ok, findings[0].status);
}

}  // namespace
