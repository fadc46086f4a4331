#include "StreamFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// The batches of a registration that QOR is set up for.
class StreamValues : public StreamTest {
protected:
    StreamValues() {
        registers(queue, {"Speed", "Load"});
        idleRound();
        qor.forgetSent();
    }
    void hasArrays(std::int32_t index, const std::vector<double>& first) {
        CommandStaticParam answer;
        answer.paramIndex = static_cast<std::uint32_t>(index);
        answer.first = first;
        answer.second = {2.0};
        answer.third = {3.0};
        qor.send(answer);
    }
};

TEST_F(StreamValues, AValueThatQorSentIsDeliveredWithoutARequest) {
    qor.sendValue(speed, 3.5);
    EXPECT_EQ(roundGives(), "Speed=3.5");
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(StreamValues, ABatchHasTheOrderOfTheHostsNames) {
    registers(queue, {"Voltage", "Speed", "Load"});
    qor.sendValue(speed, 1.0);
    qor.sendValue(load, 2.0);
    qor.sendValue(voltage, 3.0);
    EXPECT_EQ(roundGives(), "Voltage=3 Speed=1 Load=2");
    registers(queue, {"Load", "Voltage", "Speed"});
    EXPECT_EQ(roundGives(), "Load=2 Voltage=3 Speed=1");
}

TEST_F(StreamValues, ANameThatIsRegisteredTwiceIsInTheBatchTwice) {
    registers(queue, {"Speed", "Speed"});
    qor.sendValue(speed, 1.0);
    EXPECT_EQ(roundGives(), "Speed=1 Speed=1");
}

TEST_F(StreamValues, NamesWithoutAValueAreLeftOut) {
    qor.sendValue(load, 2.0);
    EXPECT_EQ(roundGives(), "Load=2");
}

TEST_F(StreamValues, AnEmptyBatchIsNotDelivered) {
    idleRounds(10);
    Values batch;
    EXPECT_FALSE(queue.pop(batch, 0));
}

TEST_F(StreamValues, TheLatestValueCounts) {
    qor.sendValue(speed, 1.0);
    qor.sendValue(speed, 2.0);
    EXPECT_EQ(roundGives(), "Speed=2");
}

TEST_F(StreamValues, AValueIsFreshForLessThanThreePeriodsAfterItsArrival) {
    qor.sendValue(speed, 1.0);
    clock.advance(freshMs - 1);
    EXPECT_EQ(roundGives(), "Speed=1");
    clock.advance(1);
    EXPECT_EQ(roundGives(), "nothing");
}

TEST_F(StreamValues, ItIsRepeatedInEveryIdleRoundUntilThen) {
    qor.sendValue(speed, 1.0);
    int batches = 0;
    for (std::uint32_t ms = 0; ms < 2 * freshMs; ++ms) {
        if (roundGives() == "Speed=1") ++batches;
        clock.advance(1);
    }
    EXPECT_EQ(batches, static_cast<int>(freshMs));
}

TEST_F(StreamValues, AParameterThatStallsDisappearsAndComesBackWithItsNextValue) {
    qor.sendValue(speed, 1.0);
    clock.advance(freshMs / 2);
    qor.sendValue(load, 2.0);
    EXPECT_EQ(roundGives(), "Speed=1 Load=2");
    clock.advance(freshMs / 2);
    EXPECT_EQ(roundGives(), "Load=2");
    qor.sendValue(speed, 3.0);
    EXPECT_EQ(roundGives(), "Speed=3 Load=2");
}

TEST_F(StreamValues, WithAPeriodOf0NothingIsEverDelivered) {
    channel->values.setReadPeriod(0);
    for (int round = 0; round < 20; ++round) {
        qor.sendValue(speed, 1.0);
        EXPECT_EQ(roundGives(), "nothing");
    }
    EXPECT_FALSE(isCached("Speed"));
}

TEST_F(StreamValues, ThePeriodOfTheLatestConnectCounts) {
    QorControlFacade::EcuConnect settings = {};
    settings.refreshPeriodMs = 50;
    ASSERT_TRUE(
        succeeds(channel::Kind::connect, std::make_shared<channel::CmdDataConnect>(
                                             settings, QorControlFacade::EcuConnect::Default)));
    qor.sendValue(speed, 1.0);
    clock.advance(149);
    EXPECT_EQ(roundGives(), "Speed=1");
    clock.advance(1);
    EXPECT_EQ(roundGives(), "nothing");
}

TEST_F(StreamValues, ThreeTimesThePeriodWraps) {
    channel->values.setReadPeriod(0x55555556u);  // three times that is 2
    qor.sendValue(speed, 1.0);
    clock.advance(1);
    EXPECT_EQ(roundGives(), "Speed=1");
    clock.advance(1);
    EXPECT_EQ(roundGives(), "nothing");
}

TEST_F(StreamValues, AReadingThatIsPreparedGoesOnWhileQorIsSilentAndTheValueFresh) {
    qor.sendValue(speed, 1.0);
    qorAnsweredAgo(5000);
    EXPECT_EQ(roundGives(), "Speed=1");
    clock.advance(freshMs);
    EXPECT_EQ(roundGives(), "nothing");
}

TEST_F(StreamValues, EachDeliveredValueRefreshesTheCacheWithTheTickOfItsArrival) {
    channel->values.store("Speed", channel::CachedValue{{9.0, 9.0}, {9.0}, {9.0}, {}});
    qor.sendValue(speed, 1.0);
    const std::uint32_t arrival = clock.now();
    clock.advance(123);
    idleRound();
    EXPECT_THAT(cached("Speed").values, ElementsAre(1.0));
    EXPECT_THAT(cached("Speed").second, IsEmpty());
    EXPECT_THAT(cached("Speed").third, IsEmpty());
    EXPECT_EQ(FakeClock::tickOf(cached("Speed").stamp), arrival);
    EXPECT_FALSE(isCached("Load"));
}

TEST_F(StreamValues, AStaleValueLeavesTheCacheAsItIs) {
    qor.sendValue(speed, 1.0);
    idleRound();
    auto entry = cached("Speed");
    entry.values = {5.0};
    channel->values.store("Speed", entry);
    clock.advance(freshMs);
    idleRound();
    EXPECT_THAT(cached("Speed").values, ElementsAre(5.0));
}

TEST_F(StreamValues, OfThreeArraysTheFirstElementIsStreamed) {
    hasArrays(speed, {1.0, 5.0});
    EXPECT_EQ(roundGives(), "Speed=1");
    EXPECT_THAT(cached("Speed").values, ElementsAre(1.0));
    EXPECT_THAT(cached("Speed").second, IsEmpty());
}

TEST_F(StreamValues, AnEmptyFirstArrayIsNoValue) {
    hasArrays(speed, {});
    EXPECT_EQ(roundGives(), "nothing");
}

TEST_F(StreamValues, EachQueueGetsABatchOfItsOwnInTheSameRound) {
    ParamQueue other{1};
    registers(other, {"Load", "Voltage"});
    qor.sendValue(speed, 1.0);
    qor.sendValue(load, 2.0);
    qor.sendValue(voltage, 3.0);
    EXPECT_EQ(roundGives(), "Speed=1 Load=2");
    EXPECT_EQ(next(other), "Load=2 Voltage=3");
}

TEST_F(StreamValues, AFullQueueIsWaitedForOnceForAMillisecondAndThenLosesItsOldValues) {
    ParamQueue single{1};
    unregisters(queue);
    registers(single, {"Speed"});
    int sleeps = 0;
    clock.onSleep = [&](unsigned int) { ++sleeps; };
    for (int round = 1; round <= 5; ++round) {
        qor.sendValue(speed, round);
        idleRound();
    }
    clock.onSleep = nullptr;  // the count goes with this function, the agent sleeps once more
    EXPECT_EQ(sleeps, 4);
    EXPECT_TRUE(single.overflowed());
    EXPECT_EQ(next(single), "Speed=5");
    EXPECT_EQ(next(single), "nothing");
}

TEST_F(StreamValues, RequestsGoBeforeValues) {
    qor.sendValue(speed, 1.0);
    for (int request = 0; request < 10; ++request)
        post(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(100u), nullptr);
    for (int request = 0; request < 10; ++request) {
        agent.step();
        EXPECT_EQ(next(queue), "nothing");
    }
    EXPECT_THAT(qor.all<CommandPing>(), SizeIs(10));
    EXPECT_EQ(roundGives(), "Speed=1");
}

}  // namespace
