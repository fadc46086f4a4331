#include "StreamDtcFixture.h"

namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::uint32_t dayMs = 24 * 60 * 60 * 1000;

/// The system's count of milliseconds begins again at 0 in the middle of a stream, and nobody
/// notices.
class StreamWrap : public StreamDtcs {
protected:
    void streamSpeed() {
        channel->streams.add(&values, {"Speed"});
        channel->streams.notePreparation(&values, true, 0, {"Speed"});
    }
    std::string valuesOfARound() { return roundGives(values); }

    ParamQueue values{8};
};

TEST_F(StreamWrap, AValueIsFreshForThreePeriodsAcrossIt) {
    streamSpeed();
    untilBeforeWrap(100);
    qor.sendValue(speed, 1.0);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    clock.advance(99);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    clock.advance(1);
    ASSERT_EQ(clock.now(), 0u);
    EXPECT_EQ(valuesOfARound(), "Speed=1");
    clock.advance(freshMs - 101);
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

TEST_F(StreamWrap, AStreamThatQorFeedsHasNoGap) {
    streamSpeed();
    untilBeforeWrap(5000);
    for (std::uint32_t ms = 0; ms < 10000; ms += 10) {
        qor.sendValue(speed, ms);
        EXPECT_NE(valuesOfARound(), "nothing") << ms;
        clock.advance(10);
    }
}

TEST_F(StreamWrap, WhatWasStaleBeforeItStaysStaleBehindIt) {
    streamSpeed();
    untilBeforeWrap(1000);
    qor.sendValue(speed, 1.0);
    clock.advance(freshMs);
    EXPECT_EQ(valuesOfARound(), "nothing");
    clock.advance(1000 - freshMs);
    EXPECT_EQ(valuesOfARound(), "nothing");
    clock.advance(dayMs);
    EXPECT_EQ(valuesOfARound(), "nothing");
}

TEST_F(StreamWrap, WithAPeriodOf0NothingIsEverDelivered) {
    streamSpeed();
    channel->values.setReadPeriod(0);
    untilBeforeWrap(1);
    qor.sendValue(speed, 1.0);
    EXPECT_EQ(valuesOfARound(), "nothing");
    clock.advance(1);
    EXPECT_EQ(valuesOfARound(), "nothing");
    clock.advance(dayMs);
    EXPECT_EQ(valuesOfARound(), "nothing");
}

TEST_F(StreamWrap, ADeliveredValueIsCachedWithTheTimeOfItsArrival) {
    streamSpeed();
    untilBeforeWrap(50);
    qor.sendValue(speed, 1.0);
    const common::Moment arrival = common::now();
    clock.advance(100);
    idleRound();
    EXPECT_EQ(cached("Speed").stamp, arrival);
}

TEST_F(StreamWrap, RightBeforeItANewRegistrationIsPrepared) {
    for (const std::uint32_t ms : {1001u, 1000u, 999u, 1u}) {
        SCOPED_TRACE(ms);
        ParamQueue target{8};
        untilBeforeWrap(ms);
        registers(target, {"Speed"});
        idleRound();
        EXPECT_TRUE(isPrepared(target));
        unregisters(target);
        clock.advance(2000);
    }
}

TEST_F(StreamWrap, AnAnswerFromBeforeItCountsForASecond) {
    untilBeforeWrap(500);
    clock.advance(1000);
    registers(values, {"Speed"});
    idleRound();
    EXPECT_FALSE(isPrepared(values));
    untilBeforeWrap(500);
    clock.advance(999);
    idleRound();
    EXPECT_TRUE(isPrepared(values));
}

TEST_F(StreamWrap, AQorThatFellSilentBeforeItIsSilentADayLater) {
    untilBeforeWrap(1001);
    clock.advance(dayMs);
    registers(values, {"Speed"});
    idleRound();
    EXPECT_FALSE(isPrepared(values));
}

TEST_F(StreamWrap, ReadsOfTroubleCodesKeepTheirPaceAcrossIt) {
    untilBeforeWrap(1500);
    streamsEvery(2000);
    idleRound();
    EXPECT_EQ(nextCodes(), "1 codes");
    qor.forgetSent();
    for (std::uint32_t ms = 0; ms < 2000; ++ms) {
        qorAnswersNow();
        idleRound();
        clock.advance(1);
    }
    EXPECT_THAT(reads(), IsEmpty());
    idleRound();
    EXPECT_THAT(reads(), SizeIs(1));
    EXPECT_EQ(nextCodes(), "1 codes");
}

TEST_F(StreamWrap, InTheLastSecondBeforeItTroubleCodesFlow) {
    untilBeforeWrap(1000);
    streamsEvery(300);
    EXPECT_EQ(roundsEvery(300, 5), "1 codes 1 codes 1 codes 1 codes 1 codes ");
}

TEST_F(StreamWrap, NeitherMoreNorLessTroubleCodesAreReadAcrossIt) {
    untilBeforeWrap(10000);
    streamsEvery(1000);
    std::string told;
    for (std::uint32_t ms = 0; ms < 20000; ms += 100) {
        qorAnswersNow();
        idleRound();
        for (std::string codesTold = nextCodes(); codesTold != "-"; codesTold = nextCodes())
            told += codesTold == "1 codes" ? '.' : '!';
        clock.advance(100);
    }
    EXPECT_EQ(told, std::string(20, '.'));
}

TEST_F(StreamWrap, AReadThatWasDueJustBeforeItIsMadeBehindIt) {
    untilBeforeWrap(1010);
    streamsEvery(1005);
    idleRound();  // due again 5 ms before the wrap
    EXPECT_EQ(nextCodes(), "1 codes");
    clock.advance(1020);  // a long request
    EXPECT_EQ(roundsEvery(5000, 3), "1 codes 1 codes 1 codes ");
}

TEST_F(StreamWrap, ThePaceOf49DaysIsKept) {
    streamsEvery(0xFFFFFFFDu);
    EXPECT_EQ(
        roundsEvery(dayMs, 49), "1 codes " + [] {
            std::string silence;
            for (int day = 1; day < 49; ++day) silence += "- ";
            return silence;
        }());
    EXPECT_EQ(roundsEvery(dayMs, 2), "- 1 codes ");
}

TEST_F(StreamWrap, APeriodOfMinusOneIsNone) {
    streamsEvery(0xFFFFFFFFu);
    EXPECT_EQ(roundsEvery(1, 3), "1 codes 1 codes 1 codes ");
}

}  // namespace
