#include "common/SlicedWait.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"

using common::SlicedWait;

TEST(SlicedWait, TheFirstSliceIsTheWholeSpan) {
    const FakeClock clock;
    for (const std::uint32_t spanMs : {0u, 1u, 500u, 0xFFFFFFFEu, 0xFFFFFFFFu})
        EXPECT_EQ(SlicedWait(spanMs).sliceMs(), spanMs);
}

TEST(SlicedWait, ASliceThatEndsEarlyIsFollowedByTheRest) {
    FakeClock clock;
    SlicedWait wait(500);
    clock.advance(100);
    EXPECT_TRUE(wait.goesOn());
    EXPECT_EQ(wait.sliceMs(), 400u);
    clock.advance(399);
    EXPECT_TRUE(wait.goesOn());
    EXPECT_EQ(wait.sliceMs(), 1u);
}

TEST(SlicedWait, ASliceInWhichNoTimePassesLeavesAllOfIt) {
    const FakeClock clock;
    SlicedWait wait(1);
    EXPECT_TRUE(wait.goesOn());
    EXPECT_EQ(wait.sliceMs(), 1u);
}

TEST(SlicedWait, EndsOnceTheWholeSpanHasPassed) {
    for (const std::uint32_t passedMs : {500u, 501u, 0x80000000u}) {
        FakeClock clock;
        SlicedWait wait(500);
        clock.advance(passedMs);
        EXPECT_FALSE(wait.goesOn());
        EXPECT_EQ(wait.sliceMs(), 0u);
    }
}

TEST(SlicedWait, OfNoSpanHasOneSlice) {
    const FakeClock clock;
    SlicedWait wait(0);
    EXPECT_EQ(wait.sliceMs(), 0u);
    EXPECT_FALSE(wait.goesOn());
}

TEST(SlicedWait, WithoutLimitItGoesOnForWeeks) {
    FakeClock clock;
    SlicedWait wait(common::noLimitMs);
    for (int weeks = 0; weeks < 20; ++weeks) {
        clock.advance(7u * 24 * 60 * 60 * 1000);
        EXPECT_TRUE(wait.goesOn());
        EXPECT_EQ(wait.sliceMs(), common::noLimitMs);
    }
}

TEST(SlicedWait, TheNumberBelowNoLimitIsASpanLikeAnyOther) {
    FakeClock clock;
    SlicedWait wait(0xFFFFFFFE);
    clock.advance(0xFFFFFFFD);
    EXPECT_TRUE(wait.goesOn());
    EXPECT_EQ(wait.sliceMs(), 1u);
    clock.advance(1);
    EXPECT_FALSE(wait.goesOn());
}

TEST(SlicedWait, MeasuresAcrossTheWrapOfTheTicks) {
    FakeClock clock(0xFFFFFFF0);
    SlicedWait wait(0x20);
    clock.advance(0x1F);
    EXPECT_TRUE(wait.goesOn());
    clock.advance(1);
    EXPECT_FALSE(wait.goesOn());
}

TEST(SlicedWait, ReadsTheClockOnceAtTheStartAndOnceBehindEachSlice) {
    FakeClock clock;
    const std::uint32_t before = clock.now();
    clock.msPerRead = 1;
    SlicedWait wait(500);
    EXPECT_EQ(clock.now() - before, 1u);
    EXPECT_EQ(wait.sliceMs(), 500u);
    EXPECT_TRUE(wait.goesOn());
    EXPECT_EQ(clock.now() - before, 2u);
    EXPECT_EQ(wait.sliceMs(), 499u);
}
