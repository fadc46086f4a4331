#include "transport/ReceiveBuffer.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

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
