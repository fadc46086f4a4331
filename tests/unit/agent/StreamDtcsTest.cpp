#include "StreamDtcFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST_F(StreamDtcs, TheFirstReadIsAtOnceWithTheTimeoutOfTheStart) {
    streamsEvery(1000, 700);
    idleRound();
    EXPECT_EQ(nextCodes(), "1 codes");
    ASSERT_THAT(reads(), SizeIs(1));
    EXPECT_TRUE(reads()[0]->option);
    EXPECT_THAT(reads()[0]->dtcs, IsEmpty());
    EXPECT_EQ(qor.sent().back().timeoutMs, 700u);
}

TEST_F(StreamDtcs, AllFieldsOfACodeAreHandedOn) {
    qorHasCodes({{0x1234, 5, "a", "b", "c", "d"}, {1, 2, "", "", "", "e"}});
    streamsEvery(1000);
    idleRound();
    Codes list;
    ASSERT_TRUE(codes.pop(list, 0));
    ASSERT_THAT(list, SizeIs(2));
    EXPECT_EQ(list[0].code, 0x1234u);
    EXPECT_EQ(list[0].status, 5u);
    EXPECT_EQ(list[0].text1 + list[0].text2 + list[0].text3 + list[0].text4, "abcd");
    EXPECT_EQ(list[1].text4, "e");
}

TEST_F(StreamDtcs, AnEmptyListIsDeliveredToo) {
    qorHasCodes({});
    streamsEvery(1000);
    idleRound();
    EXPECT_EQ(nextCodes(), "0 codes");
}

TEST_F(StreamDtcs, TheNextReadIsDueAfterThePeriod) {
    streamsEvery(1000);
    idleRound();
    qor.forgetSent();
    clock.advance(999);
    qorAnswersNow();
    idleRounds(5);
    EXPECT_THAT(reads(), IsEmpty());
    clock.advance(1);
    idleRounds(5);
    EXPECT_THAT(reads(), SizeIs(1));
}

TEST_F(StreamDtcs, ThePeriodBeginsWithTheEndOfARead) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        clock.advance(300);
        return qor.send(CommandGetDTC());
    });
    streamsEvery(1000);
    idleRound();
    clock.advance(999);
    qorAnswersNow();
    idleRound();
    EXPECT_THAT(reads(), SizeIs(1));
    clock.advance(1);
    idleRound();
    EXPECT_THAT(reads(), SizeIs(2));
}

TEST_F(StreamDtcs, WithAPeriodOf0EveryIdleRoundReads) {
    streamsEvery(0);
    idleRounds(5);
    EXPECT_THAT(reads(), SizeIs(5));
}

TEST_F(StreamDtcs, WithoutAStartNothingIsRead) {
    idleRounds(5);
    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(StreamDtcs, TheFourthFailureInARowIsToldByOneEmptyEntry) {
    qorRefuses();
    streamsEvery(300);
    EXPECT_EQ(roundsEvery(300, 4), "- - - marker ");
}

TEST_F(StreamDtcs, AfterTheMarkerTheCountBeginsAnew) {
    qorRefuses();
    streamsEvery(300);
    EXPECT_EQ(roundsEvery(300, 13), "- - - marker - - - marker - - - marker - ");
}

TEST_F(StreamDtcs, AReadThatSucceedsSetsTheCountBack) {
    qorRefuses();
    streamsEvery(300);
    EXPECT_EQ(roundsEvery(300, 3), "- - - ");
    qorHasCodes({});
    EXPECT_EQ(roundsEvery(300, 1), "0 codes ");
    qorRefuses();
    EXPECT_EQ(roundsEvery(300, 4), "- - - marker ");
}

TEST_F(StreamDtcs, AnAnswerThatDoesNotComeInTimeIsAFailure) {
    clock.msPerRead = 10;
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return true; });
    streamsEvery(0, 100);
    for (int round = 0; round < 4; ++round) {
        qorAnswersNow();
        idleRound();
    }
    EXPECT_EQ(nextCodes(), "marker");
    EXPECT_THAT(reads(), SizeIs(4));
}

TEST_F(StreamDtcs, ASilentQorIsNotAskedAndEachPeriodCountsAsAFailure) {
    qorAnsweredAgo(1000);
    streamsEvery(300);
    std::string told;
    for (int period = 0; period < 8; ++period) {
        idleRounds(3);
        told += nextCodes() + " ";
        clock.advance(300);
    }
    EXPECT_EQ(told, "- - - marker - - - marker ");
    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(StreamDtcs, QorIsAskedIfItAnsweredLessThanASecondAgo) {
    streamsEvery(0);
    qorAnsweredAgo(999);
    idleRound();
    EXPECT_THAT(reads(), SizeIs(1));
    qorAnsweredAgo(1000);
    idleRound();
    EXPECT_THAT(reads(), SizeIs(1));
}

TEST_F(StreamDtcs, ASecondStartRedirectsTheStreamAndReadsAtOnce) {
    channel::DtcQueue other{4};
    streamsEvery(1000);
    idleRound();
    EXPECT_EQ(nextCodes(), "1 codes");
    streams(&other, 700, 5000);
    idleRound();
    EXPECT_EQ(nextCodes(), "-");
    EXPECT_EQ(nextCodes(other), "1 codes");
    EXPECT_THAT(reads(), SizeIs(2));
}

TEST_F(StreamDtcs, AStartSetsTheFailuresBack) {
    qorRefuses();
    streamsEvery(300);
    EXPECT_EQ(roundsEvery(300, 3), "- - - ");
    streamsEvery(300);
    EXPECT_EQ(roundsEvery(300, 4), "- - - marker ");
}

TEST_F(StreamDtcs, TheStopEndsTheReads) {
    streamsEvery(100);
    idleRound();
    EXPECT_TRUE(succeeds(channel::Kind::stopDtcRead, std::make_shared<channel::CmdDataDtc>()));
    codes.clear();
    qor.forgetSent();
    EXPECT_EQ(roundsEvery(100, 8), "- - - - - - - - ");
    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(StreamDtcs, AStartWithANullQueueEndsThemToo) {
    streamsEvery(100);
    idleRound();
    streams(nullptr, 700, 100);
    qor.forgetSent();
    roundsEvery(100, 4);
    EXPECT_THAT(reads(), IsEmpty());
}

TEST_F(StreamDtcs, RequestsGoBeforeTroubleCodes) {
    streamsEvery(0);
    post(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(100u), nullptr);
    agent.step();
    EXPECT_THAT(reads(), IsEmpty());
    idleRound();
    EXPECT_THAT(reads(), SizeIs(1));
}

TEST_F(StreamDtcs, ValuesAreDeliveredBeforeTroubleCodesInTheSameRound) {
    channel::ParamQueue values{4};
    channel->streams.add(&values, {"Speed"});
    streamsEvery(1000);
    qor.forgetSent();
    idleRound();
    EXPECT_THAT(sentIds(), ElementsAre(3, 5, 9));
}

}  // namespace
