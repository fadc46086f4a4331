// Some days of the simulated station. The long form is a command: ./run simtime.
#include <gtest/gtest.h>

#include "Runs.h"

namespace {

using simtime::Ms;
using simtime::Report;
using simtime::runApart;
using simtime::Wish;

constexpr Ms dayMs = 86400000;

Report reportOf(std::uint64_t seed, Ms spanMs) {
    const Wish wish = {seed, spanMs};
    const Report report = runApart(wish);
    EXPECT_EQ(report.findingCount, 0u) << "seed " << seed;
    for (const std::string& finding : report.findings)
        ADD_FAILURE() << "seed " << seed << ' ' << finding;
    return report;
}

TEST(SimulatedTime, DaysOfTroubleBringNoWrongValueNoLateCallNoNestedLocksAndNoLeak) {
    std::uint64_t calls = 0;
    std::uint64_t faults = 0;
    std::uint64_t certain = 0;
    std::uint64_t doubtful = 0;
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        const Report report = reportOf(seed, 3 * dayMs);
        EXPECT_GE(report.simulatedMs, 3 * dayMs);
        EXPECT_TRUE(report.isMemoryJudged) << report.episodes << " episodes";
        calls += report.calls;
        faults += report.faults;
        certain += report.certain;
        doubtful += report.doubtful + report.marked;
    }
    EXPECT_GT(calls, 10000u);
    EXPECT_GT(faults, 300u);
    // Nearly every answer must not be marked as perhaps an earlier request's.
    EXPECT_GT(certain, 3000u);
    EXPECT_LT(doubtful * 10, certain);
}

TEST(SimulatedTime, CallsThatAreUnderWayWhileTheTickCountWrapsEndAsAnyOthers) {
    std::uint64_t wraps = 0;
    std::uint64_t calls = 0;
    for (std::uint64_t seed = 100; wraps < 5 && seed < 140; ++seed) {
        const Report report = reportOf(seed, dayMs / 4);
        wraps += report.wraps;
        calls += report.wrapsUnderCalls;
    }
    EXPECT_GE(wraps, 5u);
    EXPECT_GT(calls, 0u);
}

TEST(SimulatedTime, TheSameSeedGivesTheSameRunAndAnotherSeedAnotherOne) {
    const Report once = reportOf(7, dayMs);
    const Report again = reportOf(7, dayMs);
    const Report other = reportOf(8, dayMs);
    EXPECT_EQ(once.hash, again.hash);
    EXPECT_EQ(once.calls, again.calls);
    EXPECT_EQ(once.simulatedMs, again.simulatedMs);
    EXPECT_NE(once.hash, other.hash);
}

}  // namespace
