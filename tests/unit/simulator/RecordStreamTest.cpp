#include "wire/RecordStream.h"

#include <random>

#include "TestSupport.h"

namespace simulator::test {
namespace {

// GetParamInfo, reply flag, request id 0x11223344, payload "ab".
const std::string recordBytes = bytesOf("03 00 01 00 44 33 22 11 02 00 00 00 61 62");

TEST(RecordStream, ReadsHeaderRequestIdAndPayload) {
    RecordStream stream;
    stream.append(recordBytes);
    const auto record = stream.next();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->id, CommandId::GetParamInfo);
    EXPECT_TRUE(record->isReply);
    EXPECT_EQ(record->requestId, 0x11223344U);
    EXPECT_EQ(record->payload, "ab");
    EXPECT_EQ(stream.bufferedBytes(), 0U);
}

TEST(RecordStream, WritesTheSameBytesThatItReads) {
    const Record record{CommandId::GetParamInfo, true, 0x11223344, "ab"};
    EXPECT_EQ(record.bytes(), recordBytes);
}

TEST(RecordStream, ARecordThatArrivesByteByByteIsReadWithItsLastByte) {
    RecordStream stream;
    for (std::size_t i = 0; i + 1 < recordBytes.size(); ++i) {
        stream.append(recordBytes.substr(i, 1));
        ASSERT_FALSE(stream.next()) << "after byte " << i;
    }
    stream.append(recordBytes.substr(recordBytes.size() - 1));
    EXPECT_TRUE(stream.next());
}

TEST(RecordStream, RecordsThatArriveTogetherAreReadOneByOneAndTheRestWaits) {
    RecordStream stream;
    stream.append(recordBytes + recordBytes + recordBytes.substr(0, 13));
    EXPECT_TRUE(stream.next());
    EXPECT_TRUE(stream.next());
    EXPECT_FALSE(stream.next());
    EXPECT_EQ(stream.bufferedBytes(), 13U);
}

TEST(RecordStream, HeaderBitsOtherThanIdAndReplyFlagAreIgnored) {
    RecordStream stream;
    stream.append(bytesOf("03 00 FE FF 01 00 00 00 00 00 00 00"));
    const auto record = stream.next();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->id, CommandId::GetParamInfo);
    EXPECT_FALSE(record->isReply);
}

TEST(RecordStream, AnIdThatNoCommandHasIsReadAsWell) {
    RecordStream stream;
    stream.append(bytesOf("0D 00 00 00 01 00 00 00 00 00 00 00"));
    EXPECT_EQ(commandName(stream.next()->id), "command 13");
}

TEST(RecordStream, AnAbsurdLengthBreaksTheStreamBeforeItsBytesArrive) {
    RecordStream stream;
    stream.append(bytesOf("03 00 00 00 01 00 00 00 01 00 00 08"));
    EXPECT_THROW(stream.next(), StreamBroken);
}

TEST(RecordStream, TheLongestPayloadAllowedIsWaitedFor) {
    RecordStream stream;
    stream.append(bytesOf("03 00 00 00 01 00 00 00 F4 FF FF 07"));
    EXPECT_FALSE(stream.next());
}

TEST(RecordStream, RandomBytesEitherBreakItOrAreConsumed) {
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        RecordStream stream;
        std::string bytes(random() % 200, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random() % 4);
        std::size_t consumed = 0;
        try {
            for (std::size_t i = 0; i < bytes.size(); i += 7) {
                stream.append(bytes.substr(i, 7));
                while (const auto record = stream.next()) consumed += 12 + record->payload.size();
            }
            EXPECT_EQ(consumed + stream.bufferedBytes(), bytes.size());
        } catch (const StreamBroken&) {
        }
    }
}

}  // namespace
}  // namespace simulator::test
