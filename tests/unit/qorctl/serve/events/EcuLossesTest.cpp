#include "serve/events/EcuLosses.h"

#include <gtest/gtest.h>

using qorctl::serve::EcuLosses;

namespace {

class EcuLossesTest : public testing::Test {
protected:
    bool isBackWhenLookedAt(bool isOnline) {
        return losses_.look([&] { return isOnline; });
    }
    /// As a connect does: the ECU is let go, and comes back before the request ends.
    void reconnectUnseen(bool isOnlineBefore) {
        losses_.beginLettingGo(isOnlineBefore);
        losses_.endLettingGo();
    }

    EcuLosses losses_;
};

TEST_F(EcuLossesTest, AFirstConnectIsNone) {
    EXPECT_FALSE(isBackWhenLookedAt(false));
    reconnectUnseen(false);
    EXPECT_FALSE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, AnEcuThatWentByItselfIsBackOnce) {
    isBackWhenLookedAt(true);
    EXPECT_FALSE(isBackWhenLookedAt(false));
    EXPECT_TRUE(isBackWhenLookedAt(true));
    EXPECT_FALSE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, OneThatWasLetGoWasNotLost) {
    isBackWhenLookedAt(true);
    losses_.beginLettingGo(true);
    EXPECT_FALSE(isBackWhenLookedAt(false));
    losses_.endLettingGo();
    EXPECT_FALSE(isBackWhenLookedAt(false));
    EXPECT_FALSE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, OneThatIsLetGoAgainWhileItIsAwayWasNotLostEither) {
    isBackWhenLookedAt(true);
    reconnectUnseen(true);
    isBackWhenLookedAt(false);
    reconnectUnseen(false);
    EXPECT_FALSE(isBackWhenLookedAt(false));
    EXPECT_FALSE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, ALossThatOnlyTheNextConnectFindsCounts) {
    isBackWhenLookedAt(true);
    losses_.beginLettingGo(false);
    EXPECT_FALSE(isBackWhenLookedAt(false));
    losses_.endLettingGo();
    EXPECT_TRUE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, SoDoesOneThatIsMendedBetweenTwoLooks) {
    isBackWhenLookedAt(true);
    reconnectUnseen(false);
    EXPECT_TRUE(isBackWhenLookedAt(true));
    EXPECT_FALSE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, OneThatIsFoundWhileALookIsTakenCountsOnce) {
    isBackWhenLookedAt(true);
    EXPECT_FALSE(losses_.look([&] {
        losses_.beginLettingGo(false);
        return false;
    }));
    losses_.endLettingGo();
    EXPECT_TRUE(isBackWhenLookedAt(true));
    EXPECT_FALSE(isBackWhenLookedAt(true));
}

TEST_F(EcuLossesTest, ALossAfterAConnectCounts) {
    isBackWhenLookedAt(true);
    reconnectUnseen(true);
    isBackWhenLookedAt(true);
    isBackWhenLookedAt(false);
    EXPECT_TRUE(isBackWhenLookedAt(true));
}

}  // namespace
