#include "doctor/HostModulesCheck.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "doctor/ModulesCheck.h"
#include "Found.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

ModuleFile fileOf(const std::string& path, std::uint16_t machine = ProgramFile::machine32) {
    return {
        path.substr(path.rfind('\\') + 1), path, 1000, "", {ProgramFile::Kind::library, machine}};
}

ModuleFile none(const std::string& name) {
    return {name, "", 0, "", {}};
}

class HostModulesCheck : public testing::Test {
protected:
    HostModules host;

    HostModulesCheck() { host.program = fileOf("c:\\eol\\host.exe"); }
    Finding check(const HostModules::Dll& dll) {
        host.dlls = {dll};
        return found(checkHostModules(host), "host." + dll.beside.name);
    }
    Finding program() const { return found(checkHostModules(host), "host.program"); }
};

TEST(NeededDlls, AreThoseOfTheLibraryThatTheHostIsLinkedTo) {
    const std::vector<const char*> all = facadeDlls();
    const auto needed = [](const std::vector<std::string>& dlls, bool hasOnlyFacadeBeside = false) {
        const auto names = neededDlls({dlls, false}, hasOnlyFacadeBeside);
        return std::vector<std::string>(names.begin(), names.end());
    };
    EXPECT_EQ(std::vector<std::string>(all.begin(), all.end()),
              needed({"KERNEL32.dll", "qorcontrolfacade.DLL"}));
    EXPECT_THAT(needed({"KERNEL32.dll", "qorcontrolc.DLL"}), ElementsAre("QorControlC.dll"));
    EXPECT_THAT(needed({"KERNEL32.dll", "libstdc++-6.dll"}), ElementsAre("QorControlC.dll"))
        << "an interpreter";
    EXPECT_EQ(all.size() + 1, needed({"QorControlC.dll", "QorControlFacade.dll"}).size());
    EXPECT_EQ(all.size(), needed({"KERNEL32.dll"}, true).size()) << "a DLL of the host's has it";
    EXPECT_THAT(needed({"QorControlC.dll"}, true), ElementsAre("QorControlC.dll"));
}

TEST_F(HostModulesCheck, TheProgramMustBeThereAndOf32Bits) {
    EXPECT_EQ(Status::ok, program().status);
    host.program = fileOf("c:\\eol\\host.exe", ProgramFile::machine64);
    EXPECT_EQ(Status::problem, program().status);
    EXPECT_THAT(program().remedy, HasSubstr("interpreter"));
    host.program = none("host.exe");
    EXPECT_EQ(Status::problem, program().status);
    host.program = {"host.bat", "c:\\eol\\host.bat", 10, "", {}};
    EXPECT_THAT(program().what, HasSubstr("is no Windows program"));
}

TEST_F(HostModulesCheck, ANetProgramForAnyProcessorDoesNotWorkWhereWindowsHas64Bits) {
    host.imports.isForAnyProcessor = true;
    EXPECT_EQ(Status::warning, program().status);
    host.systemRuns64Bit = true;
    EXPECT_EQ(Status::problem, program().status);
    EXPECT_THAT(program().remedy, HasSubstr("x86"));
    host.imports.isForAnyProcessor = false;
    EXPECT_EQ(Status::ok, program().status);
}

TEST_F(HostModulesCheck, TheProgramsLineTellsHowItGetsTheLibrary) {
    EXPECT_THAT(program().what, HasSubstr("loads one when it runs"));
    host.imports.dlls = {"QorControlC.dll"};
    EXPECT_THAT(program().what, HasSubstr("linked to QorControlC.dll"));
    host.imports.dlls = {"QorControlFacade.dll"};
    EXPECT_THAT(program().what, HasSubstr("linked to QorControlFacade.dll"));
}

TEST_F(HostModulesCheck, WithoutALinkedDllWindowsDoesNotStartTheHost) {
    EXPECT_EQ(Status::problem, check({none("a.dll"), none("a.dll"), true}).status);
    const Finding another = check({none("a.dll"), fileOf("c:\\windows\\a.dll"), true});
    EXPECT_EQ(Status::warning, another.status);
    EXPECT_THAT(another.what, HasSubstr("c:\\windows\\a.dll"));
}

TEST_F(HostModulesCheck, ALinkedDllElsewhereMustBeOneOf32Bits) {
    const Finding wide =
        check({none("a.dll"), fileOf("c:\\windows\\a.dll", ProgramFile::machine64), true});
    EXPECT_EQ(Status::problem, wide.status) << wide.what;
    EXPECT_THAT(wide.what, HasSubstr("c:\\windows\\a.dll"));
    EXPECT_THAT(wide.remedy, HasSubstr("c:\\eol\\"));
    const ModuleFile text = {"a.dll", "c:\\windows\\a.dll", 10, "", {}};
    EXPECT_EQ(Status::problem, check({none("a.dll"), text, true}).status);
}

TEST_F(HostModulesCheck, ALinkedLibraryElsewhereTellsItsVersionToo) {
    host.version = "1.2.3.0";
    ModuleFile library = fileOf("c:\\windows\\QorControlC.dll");
    library.version = "1.2.2.0";
    const Finding older = check({none("QorControlC.dll"), library, true});
    EXPECT_EQ(Status::warning, older.status);
    EXPECT_THAT(older.what, HasSubstr("not of version 1.2.3.0"));
    EXPECT_THAT(older.what, HasSubstr("not beside the host"));
    library.version = "1.2.3.0";
    const Finding same = check({none("QorControlC.dll"), library, true});
    EXPECT_EQ(Status::warning, same.status) << "it lies elsewhere";
    EXPECT_THAT(same.what, Not(HasSubstr("not of version")));
}

TEST_F(HostModulesCheck, WhatIsLoadedLaterMayLieElsewhere) {
    const Finding finding = check({none("a.dll"), none("a.dll"), false});
    EXPECT_EQ(Status::warning, finding.status);
    EXPECT_THAT(finding.remedy, HasSubstr("by its full path"));
}

TEST_F(HostModulesCheck, WhatLiesBesideTheHostIsOf32BitsAndOfTheRightVersion) {
    host.version = "1.2.3.0";
    EXPECT_EQ(Status::ok, check({fileOf("c:\\eol\\a.dll"), {}, true}).status)
        << "run-time DLLs have no version";
    EXPECT_EQ(Status::problem,
              check({fileOf("c:\\eol\\a.dll", ProgramFile::machine64), {}, true}).status);
    ModuleFile library = fileOf("c:\\eol\\QorControlC.dll");
    library.version = "1.2.2.0";
    EXPECT_EQ(Status::warning, check({library, {}, true}).status);
    library.version = "1.2.3.0";
    EXPECT_EQ(Status::ok, check({library, {}, true}).status);
}

TEST(HostModulesGather, LooksAtTheProgramAndBesideIt) {
    const TempFolder folder;
    char own[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, own, MAX_PATH);
    const std::string path = folder.write("host.exe", bytesOfFile(own));
    folder.write("QorControlFacade.dll", "x");

    const HostModules host = HostModules::gather(path, "1.0.0.0");

    ASSERT_EQ(facadeDlls().size(), host.dlls.size()) << "this test is linked to it";
    EXPECT_TRUE(host.dlls[0].beside.isThere());
    EXPECT_TRUE(host.dlls[0].isLinked);
    EXPECT_FALSE(host.dlls[1].beside.isThere());
    EXPECT_TRUE(host.dlls[1].isLinked) << host.dlls[1].beside.name;
    EXPECT_TRUE(HostModules::gather(folder.pathOf("none.exe"), "").dlls.empty());
}

TEST(HostModulesGather, LooksAtWhatThePathHasInPlaceOfAMissingDll) {
    const TempFolder folder;
    const TempFolder another;
    char own[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, own, MAX_PATH);
    const std::string program = folder.write("host.exe", bytesOfFile(own));
    const std::string elsewhere = another.write("QorControlFacade.dll", "no DLL");
    const std::string before = std::getenv("PATH");

    SetEnvironmentVariableA("PATH", another.path().c_str());
    const HostModules host = HostModules::gather(program, "");
    SetEnvironmentVariableA("PATH", before.c_str());

    ASSERT_FALSE(host.dlls.empty());
    EXPECT_EQ(bytesOfFile(elsewhere).size(), host.dlls[0].elsewhere.bytes);
    EXPECT_EQ(Status::problem, found(checkHostModules(host), "host.QorControlFacade.dll").status);
    EXPECT_FALSE(host.dlls[1].elsewhere.isThere()) << host.dlls[1].elsewhere.path;
}

}  // namespace
