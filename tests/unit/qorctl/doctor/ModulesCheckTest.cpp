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

const char* const besides = "c:\\eol\\QorControlC.dll";
const ModuleFile program{"host.exe",
                         "c:\\eol\\host.exe",
                         1000,
                         "1.2.3.0",
                         {ProgramFile::Kind::program, ProgramFile::machine32}};

TEST(ModulesCheck, ADllFromElsewhereIsAWarning) {
    const ModuleFile missing{"c.dll", "", 0, "", {}};
    const auto findings = checkOwnModules(
        program, {fileOf("C:\\EOL\\a.dll"), fileOf("c:\\other\\b.dll"), missing}, fileOf(besides));
    EXPECT_EQ(Status::ok, found(findings, "this.program").status);
    EXPECT_EQ(Status::ok, found(findings, "this.a.dll").status);
    EXPECT_EQ("1000 bytes, 32-bit, C:\\EOL\\a.dll", found(findings, "this.a.dll").what);
    EXPECT_EQ(Status::warning, found(findings, "this.b.dll").status);
    EXPECT_EQ(Status::ok, found(findings, "this.c.dll").status);
}

TEST(ModulesCheck, TheLibraryForOtherHostsIsOf32BitsAndOfThisProgramsVersion) {
    const auto statusOf = [](const ModuleFile& file) {
        return found(checkOwnModules(program, {}, file), "this.QorControlC.dll").status;
    };
    ModuleFile file = fileOf(besides);
    file.version = "1.2.3.0";
    EXPECT_EQ(Status::ok, statusOf(file));
    file.version = "1.2.4.0";
    EXPECT_EQ(Status::warning, statusOf(file));
    file.version.clear();
    EXPECT_EQ(Status::warning, statusOf(file));
    EXPECT_EQ(Status::problem, statusOf(fileOf(besides, ProgramFile::machine64)));
    EXPECT_EQ(Status::ok, statusOf({"QorControlC.dll", "", 0, "", {}})) << "it is not needed here";
}

TEST(ModulesCheck, TheLibraryInThisProgramIsOfItsVersion) {
    ModuleFile file = fileOf("c:\\eol\\QorControlFacade.dll");
    file.version = "1.2.4.0";
    const auto findings = checkOwnModules(program, {file}, fileOf(besides));
    EXPECT_EQ(Status::warning, found(findings, "this.QorControlFacade.dll").status);
    EXPECT_THAT(found(findings, "this.QorControlFacade.dll").what,
                HasSubstr("not of version 1.2.3.0"));
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
