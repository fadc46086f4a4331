#include "common/Deadline.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"

using common::Deadline;
using common::Moment;

namespace {

constexpr Moment start(5000000000);
/// Moments on both sides of a wrap of the system's count.
constexpr Moment beforeWrap(0x1FFFFFFF0);

}  // namespace

TEST(TimeLimits, TheTwoNumbersThatAreNoSpansAreTheGreatestOf32Bits) {
    EXPECT_EQ(common::noLimitMs, 0xFFFFFFFFu);
    EXPECT_EQ(common::transportDefaultMs, 0xFFFFFFFEu);
}

TEST(Deadline, HasNotPassedAtItsLastMillisecond) {
    constexpr Deadline deadline = Deadline::after(start, 50);
    EXPECT_FALSE(deadline.hasPassed(start));
    EXPECT_FALSE(deadline.hasPassed(start + 49));
    EXPECT_FALSE(deadline.hasPassed(start + 50));
    EXPECT_TRUE(deadline.hasPassed(start + 51));
}

TEST(Deadline, IsReachedAtItsLastMillisecond) {
    constexpr Deadline deadline = Deadline::after(start, 50);
    EXPECT_FALSE(deadline.isReached(start));
    EXPECT_FALSE(deadline.isReached(start + 49));
    EXPECT_TRUE(deadline.isReached(start + 50));
    EXPECT_TRUE(deadline.isReached(start + 51));
}

TEST(Deadline, OfNoSpanIsReachedAtOnceAndPassesAMillisecondLater) {
    constexpr Deadline deadline = Deadline::after(start, 0);
    EXPECT_TRUE(deadline.isReached(start));
    EXPECT_FALSE(deadline.hasPassed(start));
    EXPECT_TRUE(deadline.hasPassed(start + 1));
}

TEST(Deadline, TheRestFallsTo0AtTheEndAndStaysThere) {
    constexpr Deadline deadline = Deadline::after(start, 50);
    EXPECT_EQ(deadline.remainingMs(start), 50u);
    EXPECT_EQ(deadline.remainingMs(start + 1), 49u);
    EXPECT_EQ(deadline.remainingMs(start + 49), 1u);
    EXPECT_EQ(deadline.remainingMs(start + 50), 0u);
    EXPECT_EQ(deadline.remainingMs(start + 51), 0u);
}

TEST(Deadline, NeverHasNeitherEndNorRest) {
    for (const Deadline deadline : {Deadline::never(), Deadline::after(start, common::noLimitMs)}) {
        for (const Moment now : {Moment(), start, Moment(~std::uint64_t{0})}) {
            EXPECT_FALSE(deadline.hasPassed(now));
            EXPECT_FALSE(deadline.isReached(now));
            EXPECT_EQ(deadline.remainingMs(now), common::noLimitMs);
        }
    }
}

TEST(Deadline, AtAMomentTakesNoLimitForTheMillisecondBefore) {
    EXPECT_TRUE(Deadline::at(start + common::noLimitMs).hasPassed(start));
    EXPECT_FALSE(Deadline::at(start + common::noLimitMs).hasPassed(start - 1));
}

TEST(Deadline, AfterTheTransportsDefaultLiesTwoMillisecondsInThePast) {
    for (const Deadline deadline : {Deadline::after(start, common::transportDefaultMs),
                                    Deadline::at(start + common::transportDefaultMs)}) {
        EXPECT_TRUE(deadline.hasPassed(start));
        EXPECT_TRUE(deadline.hasPassed(start - 1));
        EXPECT_FALSE(deadline.hasPassed(start - 2));
        EXPECT_EQ(deadline.remainingMs(start), 0u);
    }
}

TEST(Deadline, TheLongestSpanOfATimeOutEndsIn49Days) {
    constexpr Deadline deadline = Deadline::after(start, 0xFFFFFFFD);
    EXPECT_EQ(deadline.remainingMs(start), 0xFFFFFFFDu);
    EXPECT_FALSE(deadline.isReached(start + 0xFFFFFFFC));
    EXPECT_TRUE(deadline.isReached(start + 0xFFFFFFFD));
    EXPECT_FALSE(deadline.hasPassed(start + 0xFFFFFFFD));
    EXPECT_TRUE(deadline.hasPassed(start + 0xFFFFFFFD + 1));
}

TEST(Deadline, ARestOfTwoToThe32OrMoreIsTheLongestSpanAndNotNoLimit) {
    const Deadline far = Deadline::at(Moment(start.ms() + 0x100000000));
    EXPECT_EQ(far.remainingMs(start), 0xFFFFFFFEu);
    EXPECT_EQ(far.remainingMs(start + 1), 0xFFFFFFFEu);
    EXPECT_EQ(far.remainingMs(start + 2), 0xFFFFFFFEu);
    EXPECT_EQ(far.remainingMs(start + 3), 0xFFFFFFFDu);
    EXPECT_FALSE(far.hasPassed(Moment(start.ms() + 0x100000000)));
    EXPECT_TRUE(far.hasPassed(Moment(start.ms() + 0x100000001)));
}

TEST(Deadline, AcrossTheWrapOfTheTicksIsLikeAnyOther) {
    constexpr Deadline deadline = Deadline::after(beforeWrap, 0x20);
    EXPECT_EQ(deadline.remainingMs(Moment(0x1FFFFFFFF)), 0x11u);
    EXPECT_EQ(deadline.remainingMs(Moment(0x200000000)), 0x10u);
    EXPECT_FALSE(deadline.isReached(Moment(0x20000000F)));
    EXPECT_TRUE(deadline.isReached(Moment(0x200000010)));
    EXPECT_FALSE(deadline.hasPassed(Moment(0x200000010)));
    EXPECT_TRUE(deadline.hasPassed(Moment(0x200000011)));
}

TEST(Deadline, ASliceOfItIsNoLongerThanAskedForAndEndsWhenItHasPassed) {
    FakeClock clock;
    const Deadline deadline = Deadline::after(common::now(), 50);
    EXPECT_EQ(deadline.sliceMs(10), 10u);
    clock.advance(40);
    EXPECT_EQ(deadline.sliceMs(10), 10u);
    clock.advance(1);
    EXPECT_EQ(deadline.sliceMs(10), 10u);
    clock.advance(1);
    EXPECT_EQ(deadline.sliceMs(10), 9u);
    clock.advance(8);
    EXPECT_EQ(deadline.sliceMs(10), 1u) << "the last millisecond is its own";
    clock.advance(8);
    EXPECT_EQ(deadline.sliceMs(10), 1u);
    EXPECT_EQ(Deadline::never().sliceMs(10), 10u);
}

TEST(Deadline, LooksAtTheClockThatIsInPlace) {
    FakeClock clock(0xFFFFFFF0);
    const Deadline deadline = Deadline::after(common::now(), 0x20);
    clock.advance(0x1F);
    EXPECT_FALSE(deadline.isReached());
    clock.advance(1);
    EXPECT_TRUE(deadline.isReached());
    EXPECT_FALSE(deadline.hasPassed());
    clock.advance(1);
    EXPECT_TRUE(deadline.hasPassed());
}

TEST(Deadline, LooksAtTheClockAlsoWhereThereIsNoLimit) {
    FakeClock clock;
    const std::uint32_t before = clock.now();
    clock.msPerRead = 1;
    EXPECT_FALSE(Deadline::never().hasPassed());
    EXPECT_FALSE(Deadline::never().isReached());
    EXPECT_EQ(clock.now() - before, 2u);
}
