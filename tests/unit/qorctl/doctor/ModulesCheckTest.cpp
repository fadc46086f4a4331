#include "doctor/ModulesCheck.h"

#include <gmock/gmock.h>

#include "Found.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

ModuleFile fileOf(const std::string& path, std::uint16_t machine = ProgramFile::machine32) {
    return {
        path.substr(path.rfind('\\') + 1), path, 1000, "", {ProgramFile::Kind::library, machine}};
}

const ModuleFile host = fileOf("c:\\eol\\host.exe");

TEST(ModulesCheck, ADllFromElsewhereIsAWarning) {
    const ModuleFile missing{"c.dll", "", 0, "", {}};
    const auto findings =
        checkOwnModules(host, {fileOf("C:\\EOL\\a.dll"), fileOf("c:\\other\\b.dll"), missing});
    EXPECT_EQ(Status::ok, found(findings, "this.program").status);
    EXPECT_EQ(Status::ok, found(findings, "this.a.dll").status);
    EXPECT_EQ("1000 bytes, 32-bit, C:\\EOL\\a.dll", found(findings, "this.a.dll").what);
    EXPECT_EQ(Status::warning, found(findings, "this.b.dll").status);
    EXPECT_EQ(Status::ok, found(findings, "this.c.dll").status);
}

TEST(ModulesCheck, A64BitHostIsAProblem) {
    EXPECT_EQ(Status::ok, found(checkHostModules(host, {}), "host.program").status);
    const auto large = fileOf("c:\\eol\\host.exe", ProgramFile::machine64);
    EXPECT_EQ(Status::problem, found(checkHostModules(large, {}), "host.program").status);
    const ModuleFile missing{"host.exe", "", 0, "", {}};
    const auto findings = checkHostModules(missing, {host});
    ASSERT_EQ(1u, findings.size());
    EXPECT_EQ(Status::problem, findings[0].status);
}

TEST(ModulesCheck, WhatAHostNeedsLiesBesideIt) {
    const ModuleFile missing{"m.dll", "", 0, "", {}};
    const auto findings = checkHostModules(
        host,
        {fileOf("c:\\eol\\a.dll"), missing, fileOf("c:\\eol\\b.dll", ProgramFile::machine64)});
    EXPECT_EQ(Status::ok, found(findings, "host.a.dll").status);
    EXPECT_EQ(Status::warning, found(findings, "host.m.dll").status);
    EXPECT_EQ(Status::problem, found(findings, "host.b.dll").status);
}

TEST(ModuleFileAt, HasTheVersionOfItsResourceOrItsSize) {
    const ModuleFile system = ModuleFile::loaded("kernel32.dll");
    EXPECT_TRUE(system.isThere());
    EXPECT_THAT(system.version, MatchesRegex("\\d+\\.\\d+\\.\\d+\\.\\d+"));
    EXPECT_THAT(system.description(), HasSubstr("version " + system.version));

    const TempFolder folder;
    const ModuleFile plain = ModuleFile::at(folder.write("x.dll", std::string(1234, 'x')));
    EXPECT_EQ(1234u, plain.bytes);
    EXPECT_EQ("", plain.version);
    EXPECT_THAT(plain.description(), HasSubstr("1234 bytes"));
    EXPECT_FALSE(ModuleFile::at(folder.pathOf("none.dll")).isThere());
    EXPECT_FALSE(ModuleFile::at(folder.path()).isThere());
    EXPECT_FALSE(ModuleFile::loaded("none.dll").isThere());
}

}  // namespace
