#include "doctor/ProgramImports.h"

#include <gmock/gmock.h>

#include <cstring>

#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrCaseEq;

namespace {

constexpr DWORD loadedAt = 0x1000;  // the one section, in memory
constexpr DWORD storedAt = 0x200;   // and in the file
constexpr DWORD sectionBytes = 0x200;
constexpr DWORD netHeadAt = 0x100;  // within the section
constexpr DWORD namesAt = 0x180;

/// A program with an import table and, by its flags, a head for .NET.
class Program {
public:
    Program() : bytes_(storedAt + sectionBytes, '\0') {
        IMAGE_DOS_HEADER dos = {};
        dos.e_magic = IMAGE_DOS_SIGNATURE;
        dos.e_lfanew = sizeof dos;
        put(0, dos);
        head.Signature = IMAGE_NT_SIGNATURE;
        head.FileHeader.Machine = IMAGE_FILE_MACHINE_I386;
        head.FileHeader.NumberOfSections = 1;
        head.FileHeader.SizeOfOptionalHeader = sizeof head.OptionalHeader;
        head.OptionalHeader.Magic = IMAGE_NT_OPTIONAL_HDR32_MAGIC;
        head.OptionalHeader.NumberOfRvaAndSizes = IMAGE_NUMBEROF_DIRECTORY_ENTRIES;
        directory(IMAGE_DIRECTORY_ENTRY_IMPORT) = loadedAt;
        section.VirtualAddress = loadedAt;
        section.PointerToRawData = storedAt;
        section.SizeOfRawData = sectionBytes;
    }
    DWORD& directory(unsigned number) {
        return head.OptionalHeader.DataDirectory[number].VirtualAddress;
    }
    void addImport(const std::string& name) {
        IMAGE_IMPORT_DESCRIPTOR entry = {};
        entry.Name = loadedAt + namesAt + names_;
        put(storedAt + imports_++ * sizeof entry, entry);
        bytes_.replace(storedAt + namesAt + names_, name.size(), name);
        names_ += static_cast<DWORD>(name.size() + 1);
    }
    void beNet(DWORD flags) {
        directory(IMAGE_DIRECTORY_ENTRY_COM_DESCRIPTOR) = loadedAt + netHeadAt;
        IMAGE_COR20_HEADER net = {};
        net.Flags = flags;
        put(storedAt + netHeadAt, net);
    }
    std::string bytes() {
        put(sizeof(IMAGE_DOS_HEADER), head);
        put(sizeof(IMAGE_DOS_HEADER) + sizeof head, section);
        return bytes_;
    }

    IMAGE_NT_HEADERS32 head = {};
    IMAGE_SECTION_HEADER section = {};

private:
    template <class Value>
    void put(std::size_t place, const Value& value) {
        std::memcpy(&bytes_[place], &value, sizeof value);
    }

    std::string bytes_;
    DWORD imports_ = 0;
    DWORD names_ = 0;
};

class Imports : public testing::Test {
protected:
    TempFolder folder;
    Program program;

    ProgramImports read(const std::string& bytes) {
        return ProgramImports::read(folder.write("x.exe", bytes));
    }
};

TEST_F(Imports, AreTheNamesInTheFileInAnyCase) {
    program.addImport("a.dll");
    program.addImport("QORCONTROLC.dll");
    const ProgramImports imports = read(program.bytes());
    EXPECT_THAT(imports.dlls, ElementsAre("a.dll", "QORCONTROLC.dll"));
    EXPECT_TRUE(imports.has("QorControlC.dll"));
    EXPECT_FALSE(imports.has("QorControl.dll"));
}

TEST_F(Imports, OfThisTestAreThoseThatItWasLinkedTo) {
    char own[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, own, MAX_PATH);
    const ProgramImports imports = ProgramImports::read(own);
    for (const char* const name : {"kernel32.dll", "QorControlFacade.dll", "libstdc++-6.dll"})
        EXPECT_THAT(imports.dlls, Contains(StrCaseEq(name)));
    EXPECT_FALSE(imports.has("QorControlC.dll"));
    EXPECT_FALSE(imports.isForAnyProcessor);
}

TEST_F(Imports, ANetProgramIsForAnyProcessorUnlessItRequires32Bits) {
    constexpr DWORD intermediate = 1, required = 2, preferred = 0x20000;
    EXPECT_FALSE(read(program.bytes()).isForAnyProcessor);
    program.beNet(intermediate);
    EXPECT_TRUE(read(program.bytes()).isForAnyProcessor);
    program.beNet(intermediate | required);
    EXPECT_FALSE(read(program.bytes()).isForAnyProcessor);
    program.beNet(intermediate | required | preferred);
    EXPECT_FALSE(read(program.bytes()).isForAnyProcessor);
}

TEST_F(Imports, OfWhatIsNo32BitProgramAreNone) {
    program.addImport("a.dll");
    program.head.OptionalHeader.Magic = IMAGE_NT_OPTIONAL_HDR64_MAGIC;
    EXPECT_THAT(read(program.bytes()).dlls, IsEmpty());
    EXPECT_THAT(read("#!/bin/sh").dlls, IsEmpty());
    EXPECT_THAT(ProgramImports::read(folder.pathOf("none")).dlls, IsEmpty());
}

TEST_F(Imports, DamageIsEndured) {
    program.addImport("a.dll");
    const std::string whole = program.bytes();
    for (std::size_t length = 0; length < whole.size(); length += 7) read(whole.substr(0, length));
    for (std::size_t place = 0; place < storedAt + 64; ++place) {
        std::string damaged = whole;
        damaged[place] = '\xFF';
        EXPECT_LE(read(damaged).dlls.size(), 4096u);
    }
    program.directory(IMAGE_DIRECTORY_ENTRY_IMPORT) = 0xFFFFFFF0;
    EXPECT_THAT(read(program.bytes()).dlls, IsEmpty());
}

}  // namespace
