#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// The list of parameters that QOR is to send by itself.
class Subscription : public ClientTest {
protected:
    Subscription() {
        clock.msPerRead = 1;
        qor.knows("Speed", 7);
        qor.knows("Load", 3);
        qor.knows("Odd", -13);
    }
    bool subscribe(const std::vector<std::string>& names) {
        return client().subscribe(client().epoch(), names);
    }
    bool unsubscribe(const std::vector<std::string>& names) {
        return client().unsubscribe(client().epoch(), names);
    }
    /// The list that QOR was last given.
    std::vector<std::uint32_t> list() const {
        return qor.last<CommandSetParamList>().paramIndices.items;
    }
};

TEST_F(Subscription, TheNamesAreResolvedAndGoOutAsOneListOfIndices) {
    EXPECT_TRUE(subscribe({"Speed", "Load"}));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 3, 5));
    EXPECT_THAT(list(), ElementsAre(3u, 7u));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 400u);
    EXPECT_EQ(qor.sent().at(2).timeoutMs, 500u);
}

TEST_F(Subscription, TheListHoldsAllThatIsSubscribedInTheOrderOfTheIndices) {
    subscribe({"Speed"});
    subscribe({"Load"});
    subscribe({"Odd"});
    EXPECT_THAT(list(), ElementsAre(0xFFFFFFF3u, 3u, 7u));
    unsubscribe({"Load"});
    EXPECT_THAT(list(), ElementsAre(0xFFFFFFF3u, 7u));
}

TEST_F(Subscription, AKnownNameIsNotResolvedAgain) {
    subscribe({"Speed"});
    unsubscribe({"Speed"});
    subscribe({"Speed"});
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 5, 5, 5));
}

TEST_F(Subscription, ANameSubscribedTwiceAndUnsubscribedOnceStaysInTheList) {
    subscribe({"Speed", "Load"});
    subscribe({"Speed"});
    EXPECT_TRUE(unsubscribe({"Speed"}));
    EXPECT_THAT(list(), ElementsAre(3u, 7u));
    EXPECT_TRUE(unsubscribe({"Speed"}));
    EXPECT_THAT(list(), ElementsAre(3u));
}

TEST_F(Subscription, ANameThatStandsTwiceInOneCallCountsTwice) {
    subscribe({"Speed", "Speed"});
    EXPECT_THAT(list(), ElementsAre(7u));
    unsubscribe({"Speed"});
    EXPECT_THAT(list(), ElementsAre(7u));
}

TEST_F(Subscription, WhatWasNeverSubscribedIsNotCountedBelowZero) {
    EXPECT_TRUE(unsubscribe({"Speed"}));
    EXPECT_TRUE(unsubscribe({"Speed"}));
    EXPECT_THAT(list(), IsEmpty());
    subscribe({"Speed"});
    EXPECT_THAT(list(), ElementsAre(7u));
}

TEST_F(Subscription, ANameThatQorDoesNotKnowLeavesEverythingAsItWas) {
    subscribe({"Speed"});
    qor.forgetSent();
    EXPECT_FALSE(subscribe({"Load", "Unknown", "Speed"}));
    EXPECT_FALSE(unsubscribe({"Speed", "Unknown"}));
    EXPECT_THAT(qor.all<CommandSetParamList>(), IsEmpty());
    subscribe({});
    EXPECT_THAT(list(), ElementsAre(7u));
}

TEST_F(Subscription, AListThatQorDoesNotTakeIsNotCounted) {
    subscribe({"Load"});
    qor.on<CommandSetParamList>([](const CommandSetParamList&) { return false; });
    for (int attempt = 0; attempt < 5; ++attempt) EXPECT_FALSE(subscribe({"Speed"}));
    qor.on<CommandSetParamList>([](const CommandSetParamList&) { return true; });
    EXPECT_TRUE(subscribe({"Speed"}));
    unsubscribe({"Speed"});
    EXPECT_THAT(list(), ElementsAre(3u));
}

TEST_F(Subscription, UnsubscribingTellsWhetherQorTookTheList) {
    subscribe({"Speed"});
    qor.on<CommandSetParamList>([](const CommandSetParamList&) { return false; });
    EXPECT_FALSE(unsubscribe({"Speed"}));
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(Subscription, NoNamesSendTheListAsItStands) {
    EXPECT_TRUE(subscribe({}));
    EXPECT_THAT(qor.sentIds(), ElementsAre(5));
    EXPECT_THAT(list(), IsEmpty());
}

/// The values that QOR sends by itself.
class PeekParamData : public ClientTest {
protected:
    PeekParamData() {
        clock.msPerRead = 1;
        qor.knows("Speed", 7);
        qor.knows("Load", 3);
    }
    bool peek() { return client().peekParamData("Speed", sample); }

    SampledValue sample{{9.0}, {8.0}, {}, common::Moment(5)};
};

TEST_F(PeekParamData, AValueIsGivenWithTheTickOfItsArrivalAndWithoutACommand) {
    client();
    qor.sendValue(7, 1.0);
    const std::uint32_t arrival = clock.now();
    qor.sendValue(3, 2.0);
    clock.advance(1000);
    ASSERT_TRUE(peek());
    EXPECT_THAT(sample.values, ElementsAre(1.0));
    EXPECT_THAT(sample.second, IsEmpty());
    EXPECT_EQ(FakeClock::tickOf(sample.tick), arrival);
    qor.forgetSent();
    EXPECT_TRUE(peek());
    EXPECT_THAT(qor.sent(), IsEmpty());
}

TEST_F(PeekParamData, TheTimesOfArrivalGoOnAcrossTheWrapOfTheTickCount) {
    client();
    clock.msPerRead = 0;
    clock.advanceToBeforeWrap(10);
    qor.sendValue(7, 1.0);
    ASSERT_TRUE(peek());
    const common::Moment before = sample.tick;
    clock.advance(30);
    qor.sendValue(7, 2.0);
    ASSERT_TRUE(peek());
    EXPECT_EQ(sample.tick - before, 30u);
}

TEST_F(PeekParamData, TheNameIsResolvedWithin400Ms) {
    EXPECT_FALSE(peek());
    ASSERT_THAT(qor.sentIds(), ElementsAre(3));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
}

TEST_F(PeekParamData, WithoutAValueOrANameTheCallersRecordStaysAsItIs) {
    client();
    qor.sendValue(3, 2.0);
    EXPECT_FALSE(peek());
    EXPECT_FALSE(client().peekParamData("Unknown", sample));
    EXPECT_THAT(sample.values, ElementsAre(9.0));
    EXPECT_EQ(sample.tick, common::Moment(5));
}

TEST_F(PeekParamData, TheLastValueIsTheOneThatCounts) {
    client();
    qor.sendValue(7, 1.0);
    qor.sendValue(7, 2.0);
    EXPECT_TRUE(peek());
    EXPECT_THAT(sample.values, ElementsAre(2.0));
}

TEST_F(PeekParamData, TheThreeArraysOfAReadAreGivenWhole) {
    client();
    CommandStaticParam answer;
    answer.paramIndex = 7;
    answer.first = {1.0, 1.5};
    answer.second = {2.0};
    answer.third = {3.0};
    qor.send(answer);
    ASSERT_TRUE(peek());
    EXPECT_THAT(sample.values, ElementsAre(1.0, 1.5));
    EXPECT_THAT(sample.second, ElementsAre(2.0));
    EXPECT_THAT(sample.third, ElementsAre(3.0));
}

TEST_F(PeekParamData, AnEmptyFirstArrayIsNoValue) {
    client();
    CommandStaticParam answer;
    answer.paramIndex = 7;
    answer.second = {2.0};
    qor.send(answer);
    EXPECT_FALSE(peek());
    EXPECT_THAT(sample.values, ElementsAre(9.0));
}

}  // namespace
