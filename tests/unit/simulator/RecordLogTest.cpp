#include "behaviour/RecordLog.h"

#include <cstdio>
#include <fstream>
#include <sstream>

#include "TestSupport.h"

namespace simulator::test {
namespace {

TEST(RecordLog, ALineHoldsEverythingThatIsOnTheWire) {
    const Record record{CommandId::GetParamInfo, true, 4294967295U, bytesOf("00 FF")};
    const nlohmann::json line =
        nlohmann::json::parse(RecordLog::line(RecordLog::Direction::In, record, 12));
    EXPECT_EQ(line, json("{'tick': 12, 'dir': 'in', 'id': 3, 'name': 'GetParamInfo', 'reply': true,"
                         "'request': 4294967295, 'length': 2, 'payload': '00ff'}"));
}

TEST(RecordLog, TheFateOfAWindowMessageIsTold) {
    const Record record{CommandId::Ping, false, 1, ""};
    const auto lineWith = [&](const MessageFate& fate) {
        return nlohmann::json::parse(RecordLog::line(RecordLog::Direction::Out, record, 1, fate));
    };
    EXPECT_EQ(lineWith({1, {}})["result"], 1);
    EXPECT_FALSE(lineWith({1, {}}).contains("failed"));
    EXPECT_EQ(lineWith({{}, "time-out"})["failed"], "time-out");
    EXPECT_FALSE(lineWith({{}, "time-out"}).contains("result"));
}

TEST(RecordLog, AWindowMessageThatIsNoRecordIsToldWithItsForm) {
    const std::string path = testing::TempDir() + "record-log-message-test.jsonl";
    std::string line;
    {
        RecordLog log(path);
        MessageForm form;
        form.tag = 7;
        form.nullLength = 99;
        log.message(RecordLog::Direction::In, "", form, 5, {0, {}});
        std::ifstream file(path);
        std::getline(file, line);
    }
    EXPECT_EQ(std::remove(path.c_str()), 0);
    EXPECT_EQ(nlohmann::json::parse(line), json("{'tick': 5, 'dir': 'in', 'tag': 7, 'raw': '',"
                                                "'nullLength': 99, 'result': 0}"));
}

TEST(RecordLog, LinesCanBeReadWhileTheLogIsOpen) {
    const std::string path = testing::TempDir() + "record-log-test.jsonl";
    std::string first;
    std::string second;
    {
        RecordLog log(path);
        log.record(RecordLog::Direction::Out, {CommandId::Ping, false, 1, ""}, 5);
        log.raw(RecordLog::Direction::Out, "\x01", 6);
        std::ifstream file(path);
        std::getline(file, first);
        std::getline(file, second);
    }
    EXPECT_EQ(nlohmann::json::parse(first)["dir"], "out");
    EXPECT_EQ(nlohmann::json::parse(second)["raw"], "01");
    EXPECT_EQ(std::remove(path.c_str()), 0);
}

TEST(RecordLog, AFileThatCannotBeMadeIsNamed) {
    EXPECT_THAT(configErrorOf([] { RecordLog("no-such-folder/x.jsonl"); }),
                testing::StartsWith("no-such-folder/x.jsonl: cannot be written"));
}

TEST(RecordLog, WithoutAPathNothingIsWritten) {
    RecordLog log("");
    log.record(RecordLog::Direction::Out, {}, 0);
    log.raw(RecordLog::Direction::In, "x", 0);
    log.message(RecordLog::Direction::In, "x", {}, 0, {});
}

}  // namespace
}  // namespace simulator::test
