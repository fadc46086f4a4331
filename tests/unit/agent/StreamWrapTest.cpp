#include "StreamDtcFixture.h"

namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

/// The tick count wraps to 0 in the middle of a stream. A time in the future is a sum that wraps
/// with it, and every comparison is a plain one between unsigned numbers.
class StreamWrap : public StreamDtcs {
protected:
    void streamSpeed() {
        const common::LockGuard guard(impl->stateLock);
        impl->repeatReads[&values] = Impl::RepeatRead{{"Speed"}, true};
    }
    std::string valuesOfARound() { return roundGives(values); }

    ParamQueue values{8};
};

TEST_F(StreamWrap, AValueWhoseTimeEndsBeyondTheWrapIsFreshOnlyFromThenOn) {
    streamSpeed();
    untilBeforeWrap(100);
    qor.sendValue(speed, 1.0);
    EXPECT_EQ(valuesOfARound(), "nothing");  // its end is 500, now is almost 2^32
    clock.advance(99);
    EXPECT_EQ(valuesOfARound(), "nothing");
    clock.advance(1);
    ASSERT_EQ(clock.now(), 0u);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    clock.advance(499);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    clock.advance(1);
    EXPECT_EQ(valuesOfARound(), "nothing");
}

TEST_F(StreamWrap, AValueWhoseTimeEndsAtTheLastTickIsFreshUpToIt) {
    streamSpeed();
    untilBeforeWrap(freshMs + 1);
    qor.sendValue(speed, 1.0);
    clock.advance(freshMs - 1);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    clock.advance(1);
    ASSERT_EQ(clock.now(), 0xFFFFFFFFu);
    EXPECT_EQ(valuesOfARound(), "nothing");
}

TEST_F(StreamWrap, AStreamThatQorFeedsGoesOnAfterAPauseOfThreePeriods) {
    streamSpeed();
    untilBeforeWrap(5000);
    std::uint32_t silentMs = 0;
    for (std::uint32_t ms = 0; ms < 10000; ms += 10) {
        qor.sendValue(speed, ms);
        if (valuesOfARound() == "nothing") silentMs += 10;
        clock.advance(10);
    }
    EXPECT_EQ(silentMs, freshMs);
}

TEST_F(StreamWrap, WhatWasStaleBeforeTheWrapPassesForFreshBehindIt) {
    streamSpeed();
    untilBeforeWrap(1000);
    qor.sendValue(speed, 1.0);
    clock.advance(freshMs);
    EXPECT_EQ(valuesOfARound(), "nothing");
    clock.advance(1000 - freshMs);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    qor.sendValue(speed, 2.0);  // QOR's next value ends that
    EXPECT_EQ(valuesOfARound(), "Speed=2");
    clock.advance(freshMs);
    EXPECT_EQ(valuesOfARound(), "nothing");
}

TEST_F(StreamWrap, InTheLastSecondBeforeItQorCountsAsSilentForANewRegistration) {
    untilBeforeWrap(1000);
    registers(values, {"Speed"});
    qorAnswersNow();
    idleRound();
    EXPECT_FALSE(isPrepared(values));
    clock.advance(1000);
    idleRound();  // the answer of a second ago is over
    EXPECT_FALSE(isPrepared(values));
    qorAnswersNow();
    idleRound();
    EXPECT_TRUE(isPrepared(values));
}

TEST_F(StreamWrap, UpToThatSecondANewRegistrationIsPrepared) {
    untilBeforeWrap(1001);
    registers(values, {"Speed"});
    qorAnswersNow();
    idleRound();
    EXPECT_TRUE(isPrepared(values));
}

TEST_F(StreamWrap, AReadOfTroubleCodesThatIsDueBeyondTheWrapIsDueAtOnceAndPacedBehindIt) {
    untilBeforeWrap(1500);
    streamsEvery(2000);
    idleRound();
    EXPECT_EQ(nextCodes(), "1 codes");
    idleRound();  // due at 500, which is less than now
    EXPECT_EQ(nextCodes(), "1 codes");
    clock.advance(1500);
    qor.forgetSent();
    qorAnswersNow();
    for (std::uint32_t ms = 0; ms < 500; ++ms) {
        idleRound();
        clock.advance(1);
    }
    EXPECT_THAT(reads(), IsEmpty());
    idleRound();
    EXPECT_THAT(reads(), SizeIs(1));
}

TEST_F(StreamWrap, InTheLastSecondBeforeItReadsOfTroubleCodesFailInEveryIdleRound) {
    untilBeforeWrap(1000);
    streamsEvery(2000);
    std::string told;
    for (int round = 0; round < 8; ++round) {
        qorAnswersNow();
        idleRound();
        told += nextCodes() + " ";
    }
    EXPECT_EQ(told, "- - - marker - - - marker ");
    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(StreamWrap, TroubleCodesFlowAgainBehindIt) {
    untilBeforeWrap(10000);
    streamsEvery(1000);
    int lists = 0;
    bool lastIsList = false;
    for (std::uint32_t ms = 0; ms < 20000; ms += 100) {
        qorAnswersNow();
        idleRound();
        for (std::string told = nextCodes(); told != "-"; told = nextCodes()) {
            lastIsList = told == "1 codes";
            lists += lastIsList ? 1 : 0;
        }
        clock.advance(100);
    }
    EXPECT_GE(lists, 18);
    EXPECT_TRUE(lastIsList);
}

TEST_F(StreamWrap, AReadThatWasDueJustBeforeItAndMissedWaitsForTheNextStart) {
    untilBeforeWrap(1010);
    streamsEvery(1005);
    idleRound();  // due again 5 ms before the wrap
    EXPECT_EQ(nextCodes(), "1 codes");
    clock.advance(1020);  // a long request
    qor.forgetSent();
    EXPECT_EQ(roundsEvery(5000, 5), "- - - - - ");
    EXPECT_THAT(reads(), IsEmpty());
    streamsEvery(1005);
    EXPECT_EQ(roundsEvery(5000, 2), "1 codes 1 codes ");
}

}  // namespace
