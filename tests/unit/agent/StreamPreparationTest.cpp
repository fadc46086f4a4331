#include "StreamFixture.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using List = std::vector<std::uint32_t>;

/// How QOR is set up to send the values of a registration.
class StreamPreparation : public StreamTest {
protected:
    void qorReportsAnEcu() {
        idleRound();
        qor.sendValue(-10, 1.0);
    }
    bool stop(const Names& names) {
        return succeeds(channel::Kind::stopParamRead,
                        std::make_shared<channel::CmdRepeatRead>(names, 0u));
    }
};

TEST_F(StreamPreparation, ANewRegistrationIsResolvedAndListedInTheNextIdleRound) {
    registers(queue, {"Load", "Speed"});
    idleRound();
    EXPECT_THAT(sentIds(), ElementsAre(3, 3, 5));
    EXPECT_THAT(lists(), ElementsAre(List{7, 9}));
    EXPECT_EQ(qor.sent().back().timeoutMs, 500u);
    EXPECT_TRUE(isPrepared(queue));
}

TEST_F(StreamPreparation, OneThatIsPreparedSendsNothingMore) {
    registers(queue, {"Speed"});
    idleRounds(20);
    EXPECT_THAT(lists(), SizeIs(1));
}

TEST_F(StreamPreparation, ItNeedsAnAnswerOfQorWithinTheLastSecond) {
    qorAnsweredAgo(1000);
    registers(queue, {"Speed"});
    idleRound();
    EXPECT_THAT(sentIds(), IsEmpty());
    EXPECT_FALSE(isPrepared(queue));
    qorAnsweredAgo(999);
    idleRound();
    EXPECT_THAT(lists(), SizeIs(1));
    EXPECT_TRUE(isPrepared(queue));
}

TEST_F(StreamPreparation, WithQorSilentItYieldsNothingUntilQorAnswersAgain) {
    qorAnsweredAgo(1000);
    registers(queue, {"Speed"});
    qor.sendValue(speed, 1.0);
    idleRounds(5);
    EXPECT_FALSE(isPrepared(queue));
    EXPECT_EQ(next(queue), "nothing");
    qor.sendValue(-10, 1.0);  // the ECU is online
    idleRound();
    EXPECT_TRUE(isPrepared(queue));
    EXPECT_EQ(next(queue), "Speed=1");
}

TEST_F(StreamPreparation, ARefusedListIsTriedAgainInEveryIdleRound) {
    refuseLists();
    registers(queue, {"Speed"});
    qor.sendValue(speed, 1.0);
    idleRounds(5);
    EXPECT_THAT(lists(), SizeIs(5));
    EXPECT_THAT(lists(), Each(List{7}));
    EXPECT_FALSE(isPrepared(queue));
    EXPECT_EQ(next(queue), "nothing");
    takeLists();
    EXPECT_EQ(roundGives(), "Speed=1");
    EXPECT_TRUE(isPrepared(queue));
}

TEST_F(StreamPreparation, TriesThatFailedAreNotCounted) {
    refuseLists();
    registers(queue, {"Speed"});
    idleRounds(5);
    takeLists();
    idleRound();
    EXPECT_TRUE(stop({"Speed"}));
    EXPECT_EQ(lists().back(), List{});
}

TEST_F(StreamPreparation, ANameThatQorDoesNotTellInTimeIsAskedForAgainInEveryIdleRound) {
    clock.msPerRead = 100;
    registers(queue, {"Speed", "Unheard"});
    for (int round = 0; round < 3; ++round) {
        qorAnswersNow();
        idleRound();
    }
    EXPECT_THAT(sentIds(), ElementsAre(3, 3, 3, 3));  // Speed is known after the first
    EXPECT_FALSE(isPrepared(queue));
}

TEST_F(StreamPreparation, OneUnknownNameKeepsAllOthersWaiting) {
    qor.knows("Gone", -1);
    registers(queue, {"Speed", "Gone", "Load"});
    qor.sendValue(speed, 1.0);
    idleRounds(5);
    EXPECT_THAT(sentIds(), ElementsAre(3, 3));
    EXPECT_FALSE(isPrepared(queue));
    EXPECT_EQ(next(queue), "nothing");
}

TEST_F(StreamPreparation, ARegistrationThatWaitsDoesNotHoldUpAnother) {
    ParamQueue other{8};
    qor.knows("Gone", -1);
    registers(queue, {"Gone"});
    registers(other, {"Speed"});
    qor.sendValue(speed, 1.0);
    EXPECT_EQ(roundGives(other), "Speed=1");
    EXPECT_EQ(next(queue), "nothing");
}

TEST_F(StreamPreparation, RegistrationsArePreparedInTheOrderOfTheirQueues) {
    ParamQueue queues[3]{ParamQueue{1}, ParamQueue{1}, ParamQueue{1}};
    registers(queues[2], {"Voltage"});
    registers(queues[0], {"Speed"});
    registers(queues[1], {"Load"});
    idleRound();
    EXPECT_THAT(lists(), ElementsAre(List{7}, List{7, 9}, List{4, 7, 9}));
}

TEST_F(StreamPreparation, WithoutNamesTheListIsSentAsItStandsAndNothingIsDelivered) {
    registers(queue, {});
    idleRounds(3);
    EXPECT_THAT(lists(), ElementsAre(List{}));
    EXPECT_TRUE(isPrepared(queue));
    EXPECT_EQ(next(queue), "nothing");
}

TEST_F(StreamPreparation, AStopDuringTheStepStaysAStop) {
    whileQorTakesAList([this] { unregisters(queue); });
    registers(queue, {"Speed"});
    qor.sendValue(speed, 1.0);
    idleRound();
    EXPECT_FALSE(isRegistered(queue));
    // The step works on its copy: the queue must still be there.
    EXPECT_EQ(next(queue), "Speed=1");
    EXPECT_EQ(roundGives(), "nothing");
    EXPECT_THAT(lists(), SizeIs(1));
}

TEST_F(StreamPreparation, NamesThatAreRegisteredAnewDuringTheStepPassForPrepared) {
    whileQorTakesAList([this] { registers(queue, {"Load"}); });
    registers(queue, {"Speed"});
    idleRounds(3);
    EXPECT_TRUE(isPrepared(queue));
    EXPECT_THAT(lists(), ElementsAre(List{7}));
    EXPECT_EQ(channel->streams.all().at(&queue).names, Names{"Load"});
}

TEST_F(StreamPreparation, WhatPassesForPreparedDoesNotTakeAnotherStreamAwayWithItsStop) {
    ParamQueue other{1};
    registers(other, {"Load"});
    idleRound();
    whileQorTakesAList([this] {
        unregisters(queue);
        registers(queue, {"Load"});
    });
    registers(queue, {"Speed"});
    idleRound();
    const auto stopped = channel->streams.remove(&queue);
    EXPECT_EQ(stopped->asked, Names{"Speed"});
    EXPECT_TRUE(stop(stopped->asked));
    EXPECT_EQ(lists().back(), List{9});
}

TEST_F(StreamPreparation, AnotherQueueThatIsRegisteredDuringTheStepHasItsTurnInTheNext) {
    ParamQueue other{1};
    whileQorTakesAList([&] { registers(other, {"Load"}); });
    registers(queue, {"Speed"});
    idleRound();
    EXPECT_FALSE(isPrepared(other));
    takeLists();
    idleRound();
    EXPECT_TRUE(isPrepared(other));
    EXPECT_THAT(lists(), ElementsAre(List{7}, List{7, 9}));
}

TEST_F(StreamPreparation, RegisteringAgainAddsTheNewNamesToTheOldOnesInQorsList) {
    registers(queue, {"Speed"});
    idleRound();
    registers(queue, {"Load"});
    idleRound();
    EXPECT_THAT(lists(), ElementsAre(List{7}, List{7, 9}));
    EXPECT_TRUE(isPrepared(queue));
}

TEST_F(StreamPreparation, TheStopRequestTakesItsNamesFromTheList) {
    registers(queue, {"Speed", "Load"});
    idleRound();
    unregisters(queue);
    EXPECT_TRUE(stop({"Speed", "Load"}));
    EXPECT_THAT(lists(), ElementsAre(List{7, 9}, List{}));
}

TEST_F(StreamPreparation, ANameThatTwoQueuesReadStaysListedUntilBothHaveStopped) {
    ParamQueue other{8};
    registers(queue, {"Speed", "Load"});
    registers(other, {"Speed"});
    idleRound();
    EXPECT_TRUE(stop({"Speed"}));
    EXPECT_EQ(lists().back(), (List{7, 9}));
    EXPECT_TRUE(stop({"Speed", "Load"}));
    EXPECT_EQ(lists().back(), List{});
}

TEST_F(StreamPreparation, AStopThatQorDoesNotTakeIsAFailure) {
    registers(queue, {"Speed"});
    idleRound();
    refuseLists();
    EXPECT_FALSE(stop({"Speed"}));
    clock.msPerRead = 100;
    EXPECT_FALSE(stop({"Unheard"}));
}

TEST_F(StreamPreparation, ThePostedStopHasNoAnswerAndNothingFollows) {
    registers(queue, {"Speed"});
    idleRound();
    unregisters(queue);
    post(channel::Kind::stopParamRead, std::make_shared<channel::CmdRepeatRead>(Names{"Speed"}, 0u),
         nullptr);
    qor.sendValue(speed, 1.0);
    agent.step();
    EXPECT_EQ(lists().back(), List{});
    EXPECT_EQ(roundGives(), "nothing");
}

TEST_F(StreamPreparation, AnotherQorIsPreparedAnew) {
    registers(queue, {"Speed", "Load"});
    idleRounds(2);
    qor.knows("Speed", 17);
    qor.knows("Load", 16);
    qor.newQor();
    qor.forgetSent();
    qorReportsAnEcu();
    idleRounds(3);
    EXPECT_THAT(lists(), ElementsAre(List{16, 17}));
    qor.sendValue(17, 1.5);
    EXPECT_EQ(roundGives(), "Speed=1.5");
}

TEST_F(StreamPreparation, AStopWhileAnotherQorIsPreparedAnewIsNotLost) {
    registers(queue, {"Speed"});
    idleRound();
    qor.newQor();
    qorReportsAnEcu();
    whileQorTakesAList([this] { unregisters(queue); });
    idleRound();
    EXPECT_EQ(lists().back(), List{});
}

TEST_F(StreamPreparation, WhatTheHostReadOfTheOldQorIsNoLongerFresh) {
    registers(queue, {"Speed"});
    idleRound();
    qor.sendValue(speed, 1.0);
    idleRound();
    std::vector<double> values, second, third;
    bool isMarked = false;
    EXPECT_TRUE(channel->values.find("Speed", values, second, third, isMarked));
    qor.newQor();
    idleRound();
    EXPECT_FALSE(channel->values.find("Speed", values, second, third, isMarked));
}

TEST_F(StreamPreparation, AnotherQorIsPreparedOnlyOnceItHasAnEcuOnline) {
    registers(queue, {"Speed"});
    idleRound();
    qor.newQor();
    qor.forgetSent();
    channel->contact.note(common::now() + 15000);  // as the progress of a connect leaves it
    idleRounds(3);
    EXPECT_THAT(lists(), IsEmpty());
    qorReportsAnEcu();
    idleRound();
    EXPECT_THAT(lists(), ElementsAre(List{7}));
}

TEST_F(StreamPreparation, AStopOfWhatTheOldQorWasAskedForLeavesTheNewOneAlone) {
    ParamQueue other{4};
    registers(queue, {"Speed"});
    registers(other, {"Speed"});
    idleRound();
    unregisters(queue);
    qor.newQor();
    qorReportsAnEcu();
    idleRounds(2);  // the other one is prepared anew
    EXPECT_TRUE(stop({"Speed"}));
    EXPECT_THAT(lists().back(), ElementsAre(7u));
    qor.sendValue(speed, 2.5);
    EXPECT_EQ(roundGives(other), "Speed=2.5");
}

}  // namespace
