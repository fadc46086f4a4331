// Counts that promise more than any payload could hold.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "EveryCommand.h"
#include "HexBytes.h"

using testing_support::bytesOf;
using testing_support::recordFrom;
using testing_support::wordOf;

namespace {

std::string recordOf(unsigned int id, const std::string& payload) {
    return wordOf(id) + wordOf(1) + wordOf(static_cast<unsigned int>(payload.size())) + payload;
}

template <class Command>
void expectDroppedWhole(const std::string& payloadHex) {
    const std::string record = recordOf(Command::id, bytesOf(payloadHex));
    std::size_t consumed = 0;
    EXPECT_EQ(Command().parse(record + "following bytes", consumed), nullptr);
    EXPECT_EQ(consumed, record.size());
}

}  // namespace

TEST(LyingCount, AListOf4294967295ElementsGivesAnEmptyResultAndIsConsumed) {
    expectDroppedWhole<CommandGetDTC>("FF FF FF FF");
    expectDroppedWhole<CommandGetDTC>("FF FF FF FF  01 00 00 00");
    expectDroppedWhole<CommandCanBusData>("FF FF FF FF");
    expectDroppedWhole<CommandDirectCtrl>("01 00 00 00  01 00 00 00  FF FF FF FF");
    expectDroppedWhole<CommandStaticParam>("01 00 00 00  01 00 00 00  FF FF FF FF");
    expectDroppedWhole<CommandReadTogether>("FF FF FF FF");
    expectDroppedWhole<CommandStartEdit>(
        "07 00 00 00  01 00 00 00  00 00 00 00  00 00 00 00"
        "FF FF FF FF");
}

TEST(LyingCount, AListOf4294967295InsideAListGivesAnEmptyResultAndIsConsumed) {
    expectDroppedWhole<CommandReadTogether>("00 00 00 00  01 00 00 00  FF FF FF FF");
    expectDroppedWhole<CommandReadTogether>("00 00 00 00  00 00 00 00  FF FF FF FF");
}

TEST(LyingCount, AGoodRecordBehindABadOneIsReadFromWhereTheBadOneEnds) {
    const std::string bad = recordOf(9, wordOf(0xFFFFFFFF));
    const std::string both = bad + recordOf(9, wordOf(0) + wordOf(1));
    const CommandGetDTC prototype;
    std::size_t consumed = 0;
    ASSERT_EQ(prototype.parse(both, consumed), nullptr);
    ASSERT_EQ(consumed, bad.size());
    const auto good = prototype.parse(both.substr(consumed), consumed);
    ASSERT_NE(good, nullptr);
    EXPECT_TRUE(dynamic_cast<CommandGetDTC&>(*good).option);
}

TEST(LyingCount, AModestSurplusIsGrantedAsDefaultElements) {
    const auto read = recordFrom<protocol::GetDtc>(wordOf(1000) + wordOf(7));
    ASSERT_EQ(read.dtcs.size(), 1000u);
    EXPECT_EQ(read.dtcs[0].code, 7u);
    EXPECT_EQ(read.dtcs[999].code, 0u);
    EXPECT_FALSE(read.option);
}

TEST(LyingCount, DefaultElementsAreGrantedUpToTheBoundAndNotBeyond) {
    const unsigned int granted = wire::Reader::maxDefaultedBytes / sizeof(double);
    const std::string twoWords(8, '\0');
    EXPECT_EQ(recordFrom<protocol::DirectCtrl>(twoWords + wordOf(granted)).values.size(), granted);
    EXPECT_THROW(recordFrom<protocol::DirectCtrl>(twoWords + wordOf(granted + 1)),
                 std::length_error);
}

TEST(LyingCount, TheBoundHoldsForTheWholePayloadNotForEachList) {
    const unsigned int half = wire::Reader::maxDefaultedBytes / sizeof(double) / 2;
    std::string payload = wordOf(0) + wordOf(3) + wordOf(half) + std::string(half * 8, '\0');
    // The first list is backed by bytes and costs nothing; the other two are not.
    EXPECT_EQ(recordFrom<protocol::ReadTogether>(payload + wordOf(half)).values[1].size(), half);
    EXPECT_THROW(recordFrom<protocol::StaticParam>(wordOf(0) + wordOf(0) + wordOf(half + 1) +
                                                   wordOf(half + 1)),
                 std::length_error);
}

TEST(LyingCount, DefaultElementsCountOnlyBeyondWhatThePayloadBacks) {
    const unsigned int count = wire::Reader::maxDefaultedBytes / sizeof(double) + 1;
    const std::string payload =
        wordOf(0) + wordOf(0) + wordOf(count) + std::string(count * 8u, '\0') + wordOf(0);
    EXPECT_EQ(recordFrom<protocol::DirectCtrl>(payload).values.size(), count);
}

TEST(LyingCount, AListThatWouldTakeTooMuchMemoryIsRefusedEvenIfThePayloadBacksIt) {
    // Empty texts: no other element takes so much more memory than bytes.
    const unsigned int granted = wire::Reader::maxElementBytes / sizeof(std::string);
    const auto payload = [](unsigned int count) {
        return std::string(16, '\0') + wordOf(count) + std::string(count * 4u, '\0');
    };
    EXPECT_EQ(recordFrom<protocol::StartEdit>(payload(granted)).files.size(), granted);
    EXPECT_THROW(recordFrom<protocol::StartEdit>(payload(granted + 1)), std::length_error);
}

TEST(LyingCount, AllListsOfARecordShareTheMemoryThatItMayTake) {
    const unsigned int granted = wire::Reader::maxElementBytes / sizeof(std::string);
    const auto payload = [=](unsigned int indices) {
        return wordOf(indices) + std::string(indices * 4u, '\0') + wordOf(0) + wordOf(granted) +
               std::string(granted * 4u, '\0');
    };
    EXPECT_EQ(recordFrom<protocol::ReadTogether>(payload(0)).names.size(), granted);
    EXPECT_THROW(recordFrom<protocol::ReadTogether>(payload(1000)), std::length_error);
}
