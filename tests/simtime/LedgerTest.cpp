// The books by which the simulated QOR's answers are judged.
#include <gtest/gtest.h>

#include "Ledger.h"

namespace {

using simtime::Ledger;
using simtime::Machine;
using simtime::Topic;
using simtime::Topics;

const Topics kwp = {{Topic::kwp}};
const Topics speed = {{Topic::values, 3}};

class LedgerOf : public testing::Test {
protected:
    void letPass(simtime::Ms ms) {
        machine_.start([this, ms] { machine_.wait(ms, nullptr); });
        machine_.run();
    }

    Machine machine_{1, {}};
    Ledger ledger_;
};

TEST_F(LedgerOf, AnswersInTimeHasNoDoubt) {
    ledger_.take(1, kwp, 0);
    ledger_.tell(std::nullopt, kwp, 100);
    ledger_.take(2, kwp, 100);
    ledger_.refuse(2, kwp, 130);
    ledger_.take(3, kwp, 130);
    ledger_.tell(3, kwp, 200);
    ledger_.take(4, speed, 0);
    EXPECT_FALSE(ledger_.isDoubtful(kwp, 0));
    EXPECT_FALSE(ledger_.isDoubtful(speed, 0));
}

TEST_F(LedgerOf, AnAnswerThatTheLibraryHasNotReadDoubtsTheNextOfTheSameAlone) {
    ledger_.take(1, kwp, 0);
    ledger_.tell(std::nullopt, kwp, 100);
    ledger_.take(2, speed, 99);
    EXPECT_FALSE(ledger_.isDoubtful(speed, 0));
    EXPECT_FALSE(ledger_.isDoubtful(kwp, 0));
    ledger_.take(3, kwp, 99);
    EXPECT_TRUE(ledger_.isDoubtful(kwp, 0));
    EXPECT_FALSE(ledger_.isDoubtful(kwp, 1));
    EXPECT_FALSE(ledger_.isDoubtful(speed, 0));
}

TEST_F(LedgerOf, OneThatIsNotAnsweredDoubtsTheNextUntilTheConnectionEnds) {
    ledger_.take(1, kwp, 0);
    ledger_.begin();
    ledger_.take(2, kwp, 0);
    EXPECT_FALSE(ledger_.isDoubtful(kwp, 0));
    ledger_.take(3, kwp, 0);
    EXPECT_TRUE(ledger_.isDoubtful(kwp, 0));
}

TEST_F(LedgerOf, AnotherModelEndsWhatIsOwedOfParametersAlone) {
    ledger_.take(1, kwp, 0);
    ledger_.take(2, speed, 0);
    ledger_.openModel();
    ledger_.take(3, speed, 0);
    EXPECT_FALSE(ledger_.isDoubtful(speed, 0));
    ledger_.take(4, kwp, 0);
    EXPECT_TRUE(ledger_.isDoubtful(kwp, 0));
}

TEST_F(LedgerOf, ASecondCopyThatNamesAnEarlierRequestDoubtsTheOneThatWaits) {
    ledger_.take(1, kwp, 0);
    ledger_.tell(1, kwp, 100);
    ledger_.take(2, kwp, 100);
    EXPECT_FALSE(ledger_.isDoubtful(kwp, 0));
    ledger_.tell(1, kwp, 200);
    EXPECT_TRUE(ledger_.isDoubtful(kwp, 0));
}

TEST_F(LedgerOf, ASecondCopyExplainsWhatOneCallGotAndNoMore) {
    ledger_.tellAgain(kwp, 0, 77);
    EXPECT_FALSE(ledger_.explains(kwp.front(), 78, 1));
    EXPECT_FALSE(ledger_.explains(speed.front(), 77, 1));
    EXPECT_TRUE(ledger_.explains(kwp.front(), 77, 1));
    EXPECT_TRUE(ledger_.explains(kwp.front(), 77, 1)) << "it is the same call";
    EXPECT_FALSE(ledger_.explains(kwp.front(), 77, 2));
    ledger_.tellAgain(kwp, 0, 77);
    EXPECT_TRUE(ledger_.explains(kwp.front(), 77, 2));
    EXPECT_FALSE(ledger_.explains(kwp.front(), 77, 3));
}

TEST_F(LedgerOf, ASecondCopyExplainsWhatTheCacheTellsOfItForItsTime) {
    ledger_.tellAgain(speed, 0, 0);
    EXPECT_FALSE(ledger_.explains(speed.front(), 1, 1, 100));
    EXPECT_TRUE(ledger_.explains(speed.front(), 0, 1, 100));
    EXPECT_FALSE(ledger_.explains(speed.front(), 0, 2, 0));
    EXPECT_TRUE(ledger_.explains(speed.front(), 0, 3, 100));
    letPass(200);
    EXPECT_FALSE(ledger_.explains(speed.front(), 0, 4, 100));
}

TEST_F(LedgerOf, ASecondCopyExplainsNothingBehindItsConnection) {
    ledger_.tellAgain(kwp, 0, 77);
    ledger_.begin();
    letPass(200);
    ledger_.begin();
    EXPECT_FALSE(ledger_.explains(kwp.front(), 77, 1));
}

}  // namespace
