#include "doctor/ProgramFile.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

using namespace qorctl::doctor;

namespace {

/// The beginning of a program: the old header, and the new one at byte 0x40.
std::string headOf(const std::string& signature, const std::string& machine,
                   const std::string& flags) {
    std::string head = "MZ" + std::string(0x3A, '\0') + std::string("\x40\0\0\0", 4);
    return head + signature + machine + std::string(16, '\0') + flags;
}

const std::string pe("PE\0\0", 4);
const std::string x86("\x4C\x01", 2);
const std::string x64("\x64\x86", 2);
const std::string executable("\x02\x01", 2);
const std::string library("\x02\x21", 2);

TEST(ProgramFile, TheMachineTellsTheBitness) {
    const ProgramFile small = ProgramFile::parse(headOf(pe, x86, executable));
    EXPECT_EQ(ProgramFile::Kind::program, small.kind);
    EXPECT_TRUE(small.isFor32Bit());
    EXPECT_EQ("32-bit", small.bitness());

    const ProgramFile large = ProgramFile::parse(headOf(pe, x64, executable));
    EXPECT_EQ(ProgramFile::Kind::program, large.kind);
    EXPECT_FALSE(large.isFor32Bit());
    EXPECT_EQ("64-bit", large.bitness());

    EXPECT_EQ("for another processor (0xAA64)",
              ProgramFile::parse(headOf(pe, "\x64\xAA", executable)).bitness());
}

TEST(ProgramFile, ADllIsNoProgram) {
    EXPECT_EQ(ProgramFile::Kind::library, ProgramFile::parse(headOf(pe, x86, library)).kind);
}

TEST(ProgramFile, OldProgramsAreTold) {
    EXPECT_EQ(ProgramFile::Kind::old,
              ProgramFile::parse(headOf(std::string("NE\0\0", 4), x86, executable)).kind);
    EXPECT_EQ(ProgramFile::Kind::old, ProgramFile::parse("MZ" + std::string(62, '\0')).kind);
}

TEST(ProgramFile, EveryCutIsNoticed) {
    const std::string whole = headOf(pe, x86, executable);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto kind = ProgramFile::parse(whole.substr(0, length)).kind;
        EXPECT_EQ(length < 2 ? ProgramFile::Kind::noProgram : ProgramFile::Kind::cutOff, kind)
            << length;
    }
    std::string astray = whole;
    astray.replace(0x3C, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(ProgramFile::Kind::cutOff, ProgramFile::parse(astray).kind);
}

TEST(ProgramFile, OtherFilesAndNoFileAreNoPrograms) {
    const TempFolder folder;
    EXPECT_EQ(ProgramFile::Kind::noProgram, ProgramFile::parse("#!/bin/sh\n").kind);
    EXPECT_EQ(ProgramFile::Kind::noProgram, ProgramFile::parse("").kind);
    EXPECT_EQ(ProgramFile::Kind::noProgram, ProgramFile::read(folder.pathOf("none.exe")).kind);
    EXPECT_EQ(ProgramFile::Kind::noProgram, ProgramFile::read(folder.path()).kind);
}

TEST(ProgramFile, ThisTestIsA32BitProgram) {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const ProgramFile self = ProgramFile::read(path);
    EXPECT_EQ(ProgramFile::Kind::program, self.kind);
    EXPECT_TRUE(self.isFor32Bit());
}

}  // namespace
