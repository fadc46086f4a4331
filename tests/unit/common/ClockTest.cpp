#include "common/Clock.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

#include "support/FakeClock.h"

namespace {

constexpr std::uint32_t dayMs = 24 * 60 * 60 * 1000;

/// Shows a new millisecond at each look, to whichever thread looks.
class CountingClock final : public common::IClock {
public:
    explicit CountingClock(std::uint32_t start) : next_(start) { common::replaceClock(this); }
    ~CountingClock() { common::replaceClock(nullptr); }
    CountingClock(const CountingClock&) = delete;
    CountingClock& operator=(const CountingClock&) = delete;

    std::uint32_t tickCount() override { return next_.fetch_add(1); }
    void sleepMs(unsigned int) override {}

private:
    std::atomic<std::uint32_t> next_;
};

/// The looking thread is held up behind its look, while another one looks later.
class OvertakingClock final : public common::IClock {
public:
    OvertakingClock() { common::replaceClock(this); }
    ~OvertakingClock() { common::replaceClock(nullptr); }
    OvertakingClock(const OvertakingClock&) = delete;
    OvertakingClock& operator=(const OvertakingClock&) = delete;

    std::uint32_t tickCount() override {
        const std::uint32_t shown = now;
        if (heldUpMs == 0) return shown;
        now += std::exchange(heldUpMs, 0);
        overtaking = common::now();
        return shown;
    }
    void sleepMs(unsigned int) override {}

    std::uint32_t now = 0;
    std::uint32_t heldUpMs = 0;
    common::Moment overtaking;
};

TEST(Moment, TheSpansThatStandForSpecialTimeOutsLeadIntoThePast) {
    const common::Moment start(1000000);
    EXPECT_EQ(start + 0xFFFFFFFFu, start - 1);
    EXPECT_EQ(start + 0xFFFFFFFEu, start - 2);
    EXPECT_EQ((start + 0xFFFFFFFDu).ms(), 1000000u + 0xFFFFFFFDull);
    EXPECT_EQ((start + 0x80000000u).ms(), 1000000u + 0x80000000ull);
}

}  // namespace

TEST(Clock, TheTicksAreThoseOfTheSystem) {
    const std::uint32_t before = GetTickCount();
    const std::uint32_t ticks = common::tickCount();
    EXPECT_LE(ticks - before, 1000u);
}

TEST(Clock, SleepingLetsTimePass) {
    const common::Moment before = common::now();
    common::sleepMs(60);
    EXPECT_GE(common::now() - before, 40u) << "ticks move in steps of up to 20 ms";
}

TEST(Clock, AReplacementGivesTheTicksAndTakesTheSleeps) {
    FakeClock clock(0xFFFFFFF0);
    std::vector<unsigned int> sleepsMs;
    clock.onSleep = [&](unsigned int ms) { sleepsMs.push_back(ms); };
    EXPECT_EQ(common::tickCount(), 0xFFFFFFF0u);
    common::sleepMs(0x20);
    EXPECT_EQ(common::tickCount(), 0x10u);
    EXPECT_EQ(sleepsMs, std::vector<unsigned int>{0x20});
}

TEST(Clock, NullBringsTheSystemsClockBack) {
    {
        FakeClock clock;
        clock.show(GetTickCount() + 1000000000u);
        common::now();
    }
    EXPECT_LE(common::tickCount() - GetTickCount() + 1000u, 2000u);
    EXPECT_LE(static_cast<std::uint32_t>(common::now().ms()) - GetTickCount() + 1000u, 2000u);
}

TEST(Clock, MomentsGoOnWhereTheTicksBeginAgain) {
    FakeClock clock;
    clock.show(0xFFFFFFF0);
    const common::Moment before = common::now();
    clock.show(0xFFFFFFFF);
    EXPECT_EQ(common::now() - before, 0xFu);
    clock.show(0);
    EXPECT_EQ(common::now() - before, 0x10u);
    clock.show(0x10);
    EXPECT_EQ(common::now() - before, 0x20u);
}

TEST(Clock, MomentsGoOnOverYears) {
    FakeClock clock;
    const common::Moment start = common::now();
    for (std::uint64_t days = 0; days < 4 * 365; days += 40) {
        EXPECT_EQ(common::now() - start, days * dayMs);
        clock.show(clock.now() + 40 * dayMs);
    }
}

TEST(Clock, ASpanThatNobodyObservedIsRightUpTo49Days) {
    for (const std::uint32_t start : {0u, 5u, 0x80000000u, 0xFFFFFFFFu}) {
        FakeClock clock;
        clock.show(start);
        const common::Moment before = common::now();
        clock.show(clock.now() + 49 * dayMs);
        EXPECT_EQ(common::now() - before, 49u * dayMs);
    }
}

TEST(Clock, ACountThatStepsBackALittleStandsStill) {
    for (const std::uint32_t tick : {0u, 5u, 0x80000000u}) {
        FakeClock clock;
        clock.show(tick);
        const common::Moment before = common::now();
        clock.show(clock.now() - 10);
        EXPECT_EQ(common::now(), before);
        clock.show(clock.now() + 11);
        EXPECT_EQ(common::now(), before + 1);
    }
}

TEST(Clock, NoRealMomentIsNever) {
    FakeClock clock;
    for (const std::uint32_t tick : {0u, 1u, 0xFFFFFFFFu}) {
        clock.show(tick);
        EXPECT_GT(common::now(), common::Moment(0xFFFFFFFF));
    }
}

TEST(Clock, AThreadThatWasOvertakenKeepsItsOwnMomentAndTakesNothingBack) {
    for (const std::uint32_t tick : {1000u, 0xFFFFFFFFu, 0xFFFFFFF0u, 0u}) {
        SCOPED_TRACE(tick);
        OvertakingClock clock;
        clock.now = tick;
        const common::Moment first = common::now();
        clock.heldUpMs = 0x20;
        EXPECT_EQ(common::now(), first);
        EXPECT_EQ(clock.overtaking - first, 0x20u);
        EXPECT_EQ(common::now(), clock.overtaking);
    }
}

TEST(Clock, ThatHoldsForAThreadThatWasHeldUpForWeeks) {
    OvertakingClock clock;
    clock.now = 0xFFFFFFF0;
    const common::Moment first = common::now();
    clock.heldUpMs = 49 * dayMs;
    EXPECT_EQ(common::now(), first);
    clock.now += 20 * dayMs;  // more than a round since the first look
    EXPECT_EQ(common::now() - first, 69u * std::uint64_t{dayMs});
}

TEST(Clock, TheVeryFirstLookMayBeOvertakenToo) {
    OvertakingClock clock;
    clock.now = 0xFFFFFFFF;
    clock.heldUpMs = 1;
    const common::Moment first = common::now();
    EXPECT_LE(first, clock.overtaking);
    EXPECT_EQ(common::now(), clock.overtaking);
}

TEST(Clock, ManyThreadsThatLookAtOnceAgreeOnTheTimeAcrossTheWrap) {
    constexpr std::uint32_t threadCount = 8;
    constexpr std::uint32_t looks = 20000;
    const CountingClock clock(0u - threadCount * looks / 2);
    const common::Moment start = common::now();
    std::atomic<int> steppedBack{0};
    std::vector<std::thread> threads;
    for (std::uint32_t i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            common::Moment last = start;
            for (std::uint32_t look = 0; look < looks; ++look) {
                const common::Moment now = common::now();
                if (now <= last) ++steppedBack;
                last = now;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(steppedBack, 0);
    EXPECT_EQ(common::now() - start, threadCount * looks + 1);
}

TEST(Clock, AReplacementBeginsAnew) {
    common::Moment atFive;
    {
        FakeClock clock;
        clock.show(5);
        atFive = common::now();
        clock.show(0xFFFFFFF0);
        common::now();
        clock.show(0x10);
        common::now();
    }
    FakeClock clock;
    clock.show(5);
    EXPECT_EQ(common::now(), atFive);
}
