#include "transport/ReceiveBuffer.h"

#include <gtest/gtest.h>

#include <thread>

#include "protocol/RecordHead.h"

namespace {

std::string record(std::uint32_t payloadBytes) {
    std::string bytes;
    wire::Writer(bytes).put(protocol::RecordHead{7, 0, payloadBytes});
    return bytes + std::string(payloadBytes, 'p');
}

TEST(ReceiveBuffer, TakingLeavesItEmpty) {
    ReceiveBuffer buffer;
    buffer.append("ab");
    buffer.append("c");

    EXPECT_EQ("abc", buffer.takeAll());
    EXPECT_EQ("", buffer.takeAll());
}

TEST(ReceiveBuffer, WhatIsPutBackStandsInFrontOfWhatArrivedMeanwhile) {
    ReceiveBuffer buffer;
    buffer.append("first");
    std::string taken = buffer.takeAll();
    buffer.append("second");

    buffer.putBack(std::move(taken));

    EXPECT_EQ("firstsecond", buffer.takeAll());
}

TEST(ReceiveBuffer, TheBeginningOfALongRecordIsNotCopiedWhenItIsPutBack) {
    ReceiveBuffer buffer;
    buffer.append(std::string(100000, 'x'));
    std::string taken = buffer.takeAll();
    const char* const memory = taken.data();

    buffer.putBack(std::move(taken));

    EXPECT_EQ(memory, buffer.takeAll().data());
}

TEST(ReceiveBuffer, TheRoomGrowsByDoublingButNeverBeyondTheBound) {
    ReceiveBuffer buffer;
    const std::string chunk(1u << 20, 'x');
    unsigned growths = 0;
    const char* memory = nullptr;
    for (std::size_t held = chunk.size(); held <= ReceiveBuffer::maxBytes; held += chunk.size()) {
        buffer.append(chunk);
        std::string bytes = buffer.takeAll();
        if (bytes.data() != memory) ++growths;
        memory = bytes.data();
        ASSERT_EQ(held, bytes.size());
        ASSERT_LE(bytes.capacity(), ReceiveBuffer::maxBytes);
        ASSERT_LE(bytes.capacity(), 2 * held);
        buffer.putBack(std::move(bytes));
    }
    EXPECT_LE(growths, 9u);
}

TEST(ReceiveBuffer, ItKnowsHowMuchOfTheLastRecordIsStillToCome) {
    ReceiveBuffer buffer;
    const std::string two = record(20) + record(1000);
    EXPECT_EQ(0u, buffer.append(two.substr(0, 11))) << "its head is not there";
    EXPECT_EQ(19u, buffer.append(two.substr(11, 2)));
    EXPECT_EQ(0u, buffer.append(two.substr(13, 19))) << "it is there";
    EXPECT_EQ(900u, buffer.append(two.substr(32, 112)));
    EXPECT_EQ(0u, buffer.append(two.substr(144)));
    EXPECT_EQ(two, buffer.takeAll());
}

TEST(ReceiveBuffer, WhereRecordsBeginIsNotKnownUntilSomethingIsPutBack) {
    ReceiveBuffer buffer;
    buffer.append(record(1000).substr(0, 100));
    std::string taken = buffer.takeAll();
    EXPECT_EQ(0u, buffer.append(record(500).substr(0, 50)));
    buffer.putBack(std::move(taken));
    EXPECT_EQ(1012u - 151, buffer.append("x"));

    buffer.takeAll();
    buffer.putBack("");
    EXPECT_EQ(500u, buffer.append(record(500).substr(0, 12)));

    buffer.takeAll();
    buffer.clear();
    EXPECT_EQ(500u, buffer.append(record(500).substr(0, 12)));
}

TEST(ReceiveBuffer, BehindManyWholeRecordsThatWaitNoneIsHurried) {
    ReceiveBuffer buffer;
    const std::string begun = record(500).substr(0, 12);
    buffer.append(record(1u << 20));
    EXPECT_EQ(0u, buffer.append(begun));
    buffer.takeAll();
    buffer.putBack(std::string(begun));
    EXPECT_EQ(499u, buffer.append("p"));
}

TEST(ReceiveBuffer, ARecordThatEndsBeyondTheBoundGetsNoRoomBeyondIt) {
    ReceiveBuffer buffer;
    buffer.append(record(40u << 20));
    std::string head;
    wire::Writer(head).put(protocol::RecordHead{7, 0, (128u << 20) - 12});
    buffer.append(head);
    buffer.append(std::string(60u << 20, 'p'));
    EXPECT_LE(buffer.takeAll().capacity(), ReceiveBuffer::maxBytes);
}

TEST(ReceiveBuffer, ALengthThatNoRecordHasPromisesNothing) {
    ReceiveBuffer buffer;
    EXPECT_EQ(0u, buffer.append(record(20) + std::string(12, '\xFF')));
    EXPECT_EQ(0u, buffer.append("x"));
}

TEST(ReceiveBuffer, InsideOfALongRecordTheRoomGrowsInFewStepsToItsEndAndNoFurther) {
    ReceiveBuffer buffer;
    const std::string whole = record(30000000);
    const std::string chunk = whole.substr(0, 16384);
    unsigned growths = 0;
    const char* memory = nullptr;
    for (std::size_t held = 0; held < whole.size();) {
        buffer.append(whole.substr(held, chunk.size()));
        held = std::min(held + chunk.size(), whole.size());
        std::string bytes = buffer.takeAll();
        if (bytes.data() != memory) ++growths;
        memory = bytes.data();
        ASSERT_EQ(held, bytes.size());
        ASSERT_LE(bytes.capacity(), std::min(8 * held, whole.size() + 1));
        buffer.putBack(std::move(bytes));
    }
    EXPECT_LE(growths, 5u);
}

TEST(ReceiveBuffer, BytesBeyondTheBoundAreDroppedAndToldOf) {
    ReceiveBuffer buffer;
    buffer.append(std::string(ReceiveBuffer::maxBytes, 'x'));
    EXPECT_FALSE(buffer.hasOverrun());
    buffer.append("y");
    EXPECT_TRUE(buffer.hasOverrun());
    EXPECT_EQ(ReceiveBuffer::maxBytes, buffer.takeAll().size());
    EXPECT_TRUE(buffer.hasOverrun());
    buffer.clear();
    EXPECT_FALSE(buffer.hasOverrun());
}

TEST(ReceiveBuffer, WhatIsPutBackCountsForTheBoundToo) {
    ReceiveBuffer buffer;
    buffer.append(std::string(ReceiveBuffer::maxBytes, 'x'));
    buffer.putBack("left over");
    buffer.append("y");
    EXPECT_TRUE(buffer.hasOverrun());
}

TEST(ReceiveBuffer, ClearingDropsEverything) {
    ReceiveBuffer buffer;
    buffer.append(std::string(100000, 'x'));

    buffer.clear();

    const std::string left = buffer.takeAll();
    EXPECT_EQ("", left);
    EXPECT_LT(left.capacity(), 100u) << "the memory was kept";
}

TEST(ReceiveBuffer, ItMayBeFilledWhileItIsTaken) {
    constexpr std::size_t count = 20000;
    ReceiveBuffer buffer;
    std::thread writer([&buffer] {
        for (std::size_t i = 0; i < count; ++i) buffer.append("x");
    });
    std::size_t taken = 0;
    while (taken < count) {
        std::string bytes = buffer.takeAll();
        if (bytes.size() > 1) buffer.putBack(bytes.substr(1));
        taken += bytes.empty() ? 0 : 1;
    }
    writer.join();

    EXPECT_EQ("", buffer.takeAll());
}

}  // namespace
