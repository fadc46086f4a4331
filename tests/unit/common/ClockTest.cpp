#include "common/Clock.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "FakeClock.h"

using testing_support::FakeClock;

TEST(Clock, TheTicksAreThoseOfTheSystem) {
    const std::uint32_t before = GetTickCount();
    const std::uint32_t ticks = common::tickCount();
    EXPECT_LE(ticks - before, 1000u);
}

TEST(Clock, SleepingLetsTimePass) {
    const std::uint32_t before = common::tickCount();
    common::sleepMs(60);
    EXPECT_GE(common::tickCount() - before, 40u) << "ticks move in steps of up to 20 ms";
}

TEST(Clock, AReplacementGivesTheTicksAndTakesTheSleeps) {
    FakeClock clock;
    clock.now = 0xFFFFFFF0;
    EXPECT_EQ(common::tickCount(), 0xFFFFFFF0u);
    common::sleepMs(0x20);
    EXPECT_EQ(common::tickCount(), 0x10u);
    EXPECT_EQ(clock.sleepsMs, std::vector<unsigned int>{0x20});
}

TEST(Clock, NullBringsTheSystemsClockBack) {
    {
        FakeClock clock;
        clock.now = GetTickCount() + 1000000000u;
    }
    EXPECT_LE(common::tickCount() - GetTickCount() + 1000u, 2000u);
}

TEST(Clock, ASpanHasPassedOnlyBeyondItsEnd) {
    EXPECT_FALSE(common::hasPassed(100, 100, 50));
    EXPECT_FALSE(common::hasPassed(150, 100, 50));
    EXPECT_TRUE(common::hasPassed(151, 100, 50));
}

TEST(Clock, TheEndOfASpanWrapsAroundAndIsComparedPlainly) {
    EXPECT_FALSE(common::hasPassed(0x0F, 0xFFFFFFF0, 0x20));
    EXPECT_FALSE(common::hasPassed(0x10, 0xFFFFFFF0, 0x20));
    EXPECT_TRUE(common::hasPassed(0x11, 0xFFFFFFF0, 0x20));
    // Just before the wrap the sum is small already and the plain comparison says "passed".
    EXPECT_TRUE(common::hasPassed(0xFFFFFFF1, 0xFFFFFFF0, 0x20));
}

TEST(Clock, ASpanWithoutEndEndsAtOnceUnlessItStartsAtTick0) {
    EXPECT_TRUE(common::hasPassed(1000, 1000, 0xFFFFFFFF));
    EXPECT_FALSE(common::hasPassed(0xFFFFFFFF, 0, 0xFFFFFFFF));
}
