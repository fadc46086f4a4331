#include "client/ExportFiles.h"

#include <gmock/gmock.h>

#include "ClientFixture.h"
#include "trace/Trace.h"

namespace {

constexpr const char* target = "c:\\qor_exp.sde";
constexpr const char* addTarget = "c:\\qor_exp_add.sde";

/// Handling of what QOR exports, through the client's own handler.
class ExportFiles : public ClientTest {
protected:
    ExportFiles() {
        client();
        write(target, "old export");
        write(addTarget, "old addition");
    }
    ~ExportFiles() override {
        DeleteFileA(target);
        DeleteFileA(addTarget);
    }

    static void write(const char* path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
    }
    static std::string bytes(std::size_t count) {
        std::string content(count, '\0');
        for (std::size_t i = 0; i < count; ++i) content[i] = static_cast<char>(i * 7 + i / 251);
        return content;
    }
    bool handle(std::uint32_t stage) {
        CommandStartEdit record;
        record.stage = stage;
        if (!file.empty()) record.files = {file};
        if (!addFile.empty()) record.addFiles = {addFile};
        return qor.send(record);
    }
    void expectTargetsUntouched() {
        EXPECT_EQ(bytesOfFile(target), "old export");
        EXPECT_EQ(bytesOfFile(addTarget), "old addition");
    }

    std::string file = folder.write("export.tmp", "export");
    std::string addFile = folder.write("addition.tmp", "addition");
};

TEST_F(ExportFiles, AFileOf150000BytesArrivesWholeAndItsSourceIsGone) {
    const std::string content = bytes(150000);
    folder.write("export.tmp", content);
    EXPECT_TRUE(handle(4));
    EXPECT_TRUE(bytesOfFile(target) == content);
    EXPECT_FALSE(fileExists(file));
}

TEST_F(ExportFiles, EachIsCountedAndTraced) {
    const std::string log = folder.pathOf("trace.log");
    tracelog::openTraceFile(log.c_str(), "w");
    EXPECT_TRUE(handle(4));
    EXPECT_TRUE(handle(4));  // the file has gone
    EXPECT_TRUE(handle(5));
    tracelog::openTraceFile("c:\\no such folder\\x.log", "w");
    const auto lines = linesOfFile(log);
    ASSERT_EQ(lines.size(), 3u);
    unsigned int first = 0;
    ASSERT_EQ(std::sscanf(lines[0].c_str(), "1\tExport %u", &first), 1);
    const auto line = [&](unsigned int number, const std::string& rest) {
        return "1\tExport " + std::to_string(first + number) + " that QOR has asked for: " + rest +
               "'";
    };
    EXPECT_EQ(lines[0], line(0, std::string("6 bytes to '") + target + "' from '" + file));
    EXPECT_EQ(lines[1], line(1, std::string("0 bytes to '") + target + "' from '" + file));
    EXPECT_EQ(lines[2], line(2, std::string("8 bytes to '") + addTarget + "' from '" + addFile));
}

TEST_F(ExportFiles, AFileOf250000BytesIsCutTo200000AndItsSourceIsGone) {
    const std::string content = bytes(250000);
    folder.write("export.tmp", content);
    EXPECT_TRUE(handle(4));
    EXPECT_TRUE(bytesOfFile(target) == content.substr(0, 200000));
    EXPECT_FALSE(fileExists(file));
}

TEST_F(ExportFiles, AFileOfExactly200000BytesArrivesWhole) {
    const std::string content = bytes(200000);
    folder.write("export.tmp", content);
    EXPECT_TRUE(handle(4));
    EXPECT_TRUE(bytesOfFile(target) == content);
}

TEST_F(ExportFiles, BytesAreNeverTakenForLineEndsOrEndOfFile) {
    const std::string content = std::string(
        "a\r\nb\nc\x1A"
        "d\0e",
        10);
    folder.write("export.tmp", content);
    handle(4);
    EXPECT_EQ(bytesOfFile(target), content);
}

TEST_F(ExportFiles, Stage4LeavesTheAdditionAlone) {
    EXPECT_TRUE(handle(4));
    EXPECT_EQ(bytesOfFile(target), "export");
    EXPECT_EQ(bytesOfFile(addTarget), "old addition");
    EXPECT_TRUE(fileExists(addFile));
}

TEST_F(ExportFiles, Stage5CopiesTheAdditionAndLeavesTheExportAlone) {
    EXPECT_TRUE(handle(5));
    EXPECT_EQ(bytesOfFile(addTarget), "addition");
    EXPECT_FALSE(fileExists(addFile));
    EXPECT_EQ(bytesOfFile(target), "old export");
    EXPECT_TRUE(fileExists(file));
}

TEST_F(ExportFiles, OnlyTheFirstFileOfTheListIsTaken) {
    CommandStartEdit record;
    record.stage = 4;
    record.files = {file, addFile};
    EXPECT_TRUE(qor.send(record));
    EXPECT_EQ(bytesOfFile(target), "export");
    EXPECT_TRUE(fileExists(addFile));
}

TEST_F(ExportFiles, AMissingSourceGivesAnEmptyTarget) {
    file = folder.pathOf("missing.tmp");
    EXPECT_TRUE(handle(4));
    EXPECT_TRUE(fileExists(target));
    EXPECT_EQ(bytesOfFile(target), "");
}

TEST_F(ExportFiles, ATargetThatCannotBeMadeLosesTheDataAndTheSource) {
    DeleteFileA(target);
    ASSERT_TRUE(CreateDirectoryA(target, nullptr));
    EXPECT_TRUE(handle(4));
    EXPECT_FALSE(fileExists(file));
    EXPECT_TRUE(RemoveDirectoryA(target));
}

TEST_F(ExportFiles, AnEmptyListChangesNothing) {
    file.clear();
    addFile.clear();
    EXPECT_TRUE(handle(4));
    EXPECT_TRUE(handle(5));
    expectTargetsUntouched();
}

TEST_F(ExportFiles, AnEmptySourceNameGivesAnEmptyTarget) {
    CommandStartEdit record;
    record.stage = 4;
    record.files = {""};
    EXPECT_TRUE(qor.send(record));
    EXPECT_EQ(bytesOfFile(target), "");
}

TEST_F(ExportFiles, TheInformationAboutTheModelChangesNothing) {
    CommandStartEdit record;
    record.stage = 1;
    record.files = {file};
    record.addFiles = {addFile};
    for (const char* key : {"name", "version", "description", "EEPROM_ID", "crc32", "other"})
        record.info[key] = "value";
    EXPECT_TRUE(qor.send(record));
    EXPECT_TRUE(fileExists(file));
    expectTargetsUntouched();
    EXPECT_TRUE(qor.sent().empty());
}

TEST_F(ExportFiles, OtherStagesChangeNothing) {
    for (const std::uint32_t stage : {0u, 2u, 3u, 6u, 7u, 8u, 0x80000004u, 0xFFFFFFFFu})
        EXPECT_TRUE(handle(stage)) << stage;
    EXPECT_TRUE(fileExists(file));
    EXPECT_TRUE(fileExists(addFile));
    expectTargetsUntouched();
}

}  // namespace
