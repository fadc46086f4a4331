#include "ThreadCounts.h"

#include <gtest/gtest.h>

TEST(ThreadCounts, ThreadsTogetherHaveTheSumAndTheSlowestHasTheLeastOfItsSpan) {
    const Together together = togetherOf({{2, {{30, 0, 0, 0}, {10, 9, 0, 0}, {20, 0, 0, 0}}}});
    EXPECT_DOUBLE_EQ(30, together.perS);
    EXPECT_DOUBLE_EQ(10, together.meanPerS);
    EXPECT_DOUBLE_EQ(5, together.slowestPerS);
}

TEST(ThreadCounts, RatesAreThoseOfTheMiddleSpan) {
    const Together together = togetherOf({{1, {{900, 0, 0, 0}, {100, 0, 0, 0}}},
                                          {1, {{3, 0, 0, 0}, {1, 0, 0, 0}}},
                                          {1, {{60, 0, 0, 0}, {40, 0, 0, 0}}}});
    EXPECT_DOUBLE_EQ(100, together.perS);
    EXPECT_DOUBLE_EQ(50, together.meanPerS);
    EXPECT_DOUBLE_EQ(40, together.slowestPerS);
}

TEST(ThreadCounts, RefusedAndFailedCallsAreSharesOfAllCallsOfAllSpans) {
    const Together together = togetherOf({{1, {{5, 1, 1, 0}, {0, 0, 1, 2}}}, {1, {{7, 1, 2, 0}}}});
    EXPECT_DOUBLE_EQ(20, together.pushedOutPercent);
    EXPECT_DOUBLE_EQ(10, together.failedPercent);
}

TEST(ThreadCounts, WithoutACallNothingIsRefused) {
    const Together together = togetherOf({{1, {{}}}});
    EXPECT_DOUBLE_EQ(0, together.pushedOutPercent);
    EXPECT_DOUBLE_EQ(0, together.perS);
}
