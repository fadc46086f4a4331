#include "transport/PendingRequests.h"

#include <gtest/gtest.h>

#include "common/ClockSeam.h"

namespace {

class StandingClock final : public common::IClock {
public:
    std::uint32_t tickCount() override { return now; }
    void sleepMs(unsigned int ms) override { now += ms; }

    std::uint32_t now = 0;
};

class PendingRequestsTest : public testing::Test {
protected:
    StandingClock clock;
    CmdResultQueue results{1};
    PendingRequests pending;

    PendingRequestsTest() { common::replaceClock(&clock); }
    ~PendingRequestsTest() override { common::replaceClock(nullptr); }

    void addAt(std::uint32_t now, std::uint32_t id, unsigned int timeoutMs) {
        clock.now = now;
        pending.add(id, timeoutMs, &results);
    }

    void sweepAt(std::uint32_t now) {
        clock.now = now;
        pending.failExpired();
    }

    /// The result that was left, as "id:status"; empty if there is none.
    std::string result() {
        CmdResult left;
        if (!results.pop(left, 0)) return "";
        return std::to_string(left.requestId) + ":" + std::to_string(left.status);
    }
};

TEST_F(PendingRequestsTest, ACompletedRequestGivesItsResultOnce) {
    addAt(1000, 7, 500);

    pending.complete(7, CmdResult::success);
    EXPECT_EQ("7:1", result());
    EXPECT_TRUE(pending.isEmpty());

    pending.complete(7, CmdResult::success);
    EXPECT_EQ("", result());
}

TEST_F(PendingRequestsTest, AFailureIsPassedOn) {
    addAt(1000, 7, 500);

    pending.complete(7, CmdResult::failure);

    EXPECT_EQ("7:0", result());
}

TEST_F(PendingRequestsTest, AnotherIdCompletesNothing) {
    addAt(1000, 7, 500);

    pending.complete(8, CmdResult::success);

    EXPECT_EQ("", result());
    EXPECT_FALSE(pending.isEmpty());
}

TEST_F(PendingRequestsTest, ARequestFailsAfterItsDeadlineAndNotAtIt) {
    addAt(1000, 7, 500);

    sweepAt(1500);
    EXPECT_EQ("", result());
    sweepAt(1501);
    EXPECT_EQ("7:0", result());
    EXPECT_TRUE(pending.isEmpty());
}

TEST_F(PendingRequestsTest, EachRequestHasADeadlineOfItsOwn) {
    CmdResultQueue others{1};
    addAt(1000, 7, 500);
    pending.add(8, 100, &others);

    sweepAt(1200);

    CmdResult left;
    ASSERT_TRUE(others.pop(left, 0));
    EXPECT_EQ(8u, left.requestId);
    EXPECT_EQ("", result());
    EXPECT_FALSE(pending.isEmpty());
}

TEST_F(PendingRequestsTest, WithoutLimitTheNextSweepEndsIt) {
    addAt(1000, 7, 0xFFFFFFFF);

    sweepAt(1000);

    EXPECT_EQ("7:0", result());
}

TEST_F(PendingRequestsTest, WithoutLimitTheNextSweepEndsItAlsoWhereTheTicksBegin) {
    addAt(0, 7, 0xFFFFFFFF);

    sweepAt(0);

    EXPECT_EQ("7:0", result());
}

TEST_F(PendingRequestsTest, ADeadlineBehindTheWrapOfTheTicksPassesThereAndNotBefore) {
    addAt(0xFFFFFF00, 7, 0x200);

    sweepAt(0xFFFFFF01);
    EXPECT_EQ("", result());
    sweepAt(0xFFFFFFFF);
    EXPECT_EQ("", result());
    sweepAt(0x100);
    EXPECT_EQ("", result());
    sweepAt(0x101);
    EXPECT_EQ("7:0", result());
}

TEST_F(PendingRequestsTest, ADeadlineJustBeforeTheWrapHasPassedBehindIt) {
    addAt(0xFFFFFF00, 7, 0xF0);

    sweepAt(0xFFFFFFF0);
    EXPECT_EQ("", result());
    sweepAt(5);
    EXPECT_EQ("7:0", result());
}

TEST_F(PendingRequestsTest, TheLongestTimeWithALimitIs49Days) {
    addAt(1000, 7, 0xFFFFFFFD);

    for (const std::uint32_t day : {1u, 20u, 40u, 49u}) sweepAt(1000 + day * 24 * 60 * 60 * 1000);
    EXPECT_EQ("", result());
    sweepAt(997);
    EXPECT_EQ("", result());
    sweepAt(998);
    EXPECT_EQ("7:0", result());
}

TEST_F(PendingRequestsTest, TheSameIdAgainTakesTheNewDeadlineAndQueue) {
    CmdResultQueue newer{1};
    addAt(1000, 7, 100);
    pending.add(7, 500, &newer);

    sweepAt(1200);
    EXPECT_EQ("", result());
    pending.complete(7, CmdResult::success);

    CmdResult left;
    EXPECT_TRUE(newer.pop(left, 0));
}

}  // namespace
