#include "AgentFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class AgentStep : public AgentTest {
protected:
    struct ForeignData : channel::CmdData {};
};

const std::uint32_t kindsWithHandler[] = {2,  3,  4,  5,  6,  7,  8,  9,  16, 17,
                                          18, 20, 21, 22, 23, 24, 25, 32, 33, 34};

TEST_F(AgentStep, AnUnknownKindIsAnsweredAtOnceAsAFailureWithoutPayload) {
    for (const std::uint32_t kind :
         {0u,  1u,  10u, 11u, 12u, 13u, 14u, 15u,  19u,         26u,
          27u, 28u, 29u, 30u, 31u, 35u, 36u, 255u, 0x80000019u, 0xFFFFFFFFu}) {
        const auto answer =
            carryOut(channel::Kind{kind}, std::make_shared<channel::CmdDataPing>(100u));
        EXPECT_EQ(answer.result, 0u) << kind;
        EXPECT_EQ(answer.data, nullptr) << kind;
    }
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(AgentStep, AnUnknownKindWithoutAReplyQueueIsDropped) {
    post(channel::Kind{99}, nullptr, nullptr);
    agent.step();
    EXPECT_TRUE(succeeds(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(100u)));
}

TEST_F(AgentStep, APayloadOfAnotherTypeIsAFailureAndSendsNothing) {
    for (const std::uint32_t kind : kindsWithHandler) {
        const auto answer = carryOut(channel::Kind{kind}, std::make_shared<ForeignData>());
        EXPECT_EQ(answer.result, 0u) << kind;
        EXPECT_EQ(answer.data, nullptr) << kind;
    }
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(AgentStep, AMissingPayloadIsAFailureAndSendsNothing) {
    for (const std::uint32_t kind : kindsWithHandler)
        EXPECT_EQ(carryOut(channel::Kind{kind}, nullptr).result, 0u) << kind;
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(AgentStep, ThePayloadOfOneKindDoesNotServeAnother) {
    EXPECT_FALSE(
        succeeds(channel::Kind::pingQor, std::make_shared<channel::CmdDataParamData>("a", 1u)));
    EXPECT_FALSE(succeeds(channel::Kind::getParamData, std::make_shared<channel::CmdDataPing>(1u)));
    EXPECT_FALSE(succeeds(channel::Kind::getParamDescription,
                          std::make_shared<channel::CmdDataParamData>("a", 1u)));
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(AgentStep, RequestsAreCarriedOutOneARoundInTheOrderOfTheirPush) {
    for (unsigned int timeoutMs = 1; timeoutMs <= 10; ++timeoutMs)
        post(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(timeoutMs), nullptr);
    std::vector<unsigned int> timeouts;
    for (int round = 1; round <= 10; ++round) {
        agent.step();
        EXPECT_THAT(qor.all<CommandPing>(), SizeIs(round));
    }
    for (const auto& each : qor.sent()) timeouts.push_back(each.timeoutMs);
    EXPECT_THAT(timeouts, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST_F(AgentStep, ARoundWithoutARequestSendsNothing) {
    for (int round = 0; round < 20; ++round) agent.step();
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(AgentStep, APingGivesQorThePayloadsTimeoutAndAnswersWithoutPayload) {
    const auto answer =
        carryOut(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(0xFFFFFFFEu));
    EXPECT_EQ(answer.result, 1u);
    EXPECT_EQ(answer.data, nullptr);
    EXPECT_EQ(qor.sent().back().timeoutMs, 0xFFFFFFFEu);
}

TEST_F(AgentStep, APingThatQorDoesNotAnswerFails) {
    qor.acknowledges = false;
    EXPECT_FALSE(succeeds(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(100u)));
}

/// Whether QOR and the ECU are there, as the facade sees it.
class AgentOnlineState : public AgentTest {
protected:
    void qorReportsOnline(double value) { qor.sendValue(-10, value); }
    void untilNextQuery() {
        clock.advance(400);
        agent.step();
    }
};

TEST_F(AgentOnlineState, AReportOfTheEcuOnlineIsNotedInTheNextRound) {
    EXPECT_FALSE(channel->contact.isEcuOnline());
    qorReportsOnline(1.0);
    agent.step();
    EXPECT_TRUE(channel->contact.isEcuOnline());
}

TEST_F(AgentOnlineState, AQorThatOnlyAnswersPingsLeavesTheEcuOffline) {
    for (int round = 0; round < 5; ++round) {
        EXPECT_TRUE(succeeds(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(100u)));
        untilNextQuery();
    }
    EXPECT_FALSE(channel->contact.isEcuOnline());
}

TEST_F(AgentOnlineState, TwoSecondsAfterTheLastReportTheEcuIsOffline) {
    clock.msPerRead = 0;
    qorReportsOnline(1.0);
    agent.step();
    const std::uint32_t noted = clock.now();
    EXPECT_EQ(FakeClock::tickOf(channel->contact.last()), noted);
    clock.advance(400);
    agent.step();  // asks, without an answer
    clock.advance(1599);
    EXPECT_TRUE(channel->contact.isEcuOnline());
    clock.advance(1);
    EXPECT_FALSE(channel->contact.isEcuOnline());
}

TEST_F(AgentOnlineState, TheStateIsAskedForEvery400Ms) {
    clock.msPerRead = 0;
    qor.forgetSent();
    for (int round = 0; round < 100; ++round) {
        clock.advance(100);
        agent.step();
    }
    EXPECT_THAT(qor.all<CommandKwpConnect>(), SizeIs(25));
}

/// The end of the work with QOR.
class AgentFinish : public AgentTest {};

TEST_F(AgentFinish, AQorOfTheSettingsIsDisconnectedAndShutDownWithBothOptions) {
    channel->executable.publish("c:\\qor.exe");
    agent.finish();
    EXPECT_THAT(qor.sentIds(), ElementsAre(2, 4));
    EXPECT_EQ(qor.last<CommandKwpConnect>().protocol, 0u);
    EXPECT_EQ(qor.last<CommandKwpConnect>().mode, 0u);
    EXPECT_EQ(qor.last<CommandShutdown>().flags, 6u);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 3000u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 5000u);
}

TEST_F(AgentFinish, AQorThatDoesNotTakeTheDisconnectIsShutDownAllTheSame) {
    channel->executable.publish("c:\\qor.exe");
    qor.acknowledges = false;
    agent.finish();
    EXPECT_THAT(qor.sentIds(), ElementsAre(2, 4));
}

TEST_F(AgentFinish, AQorOfSomeoneElseIsLeftAlone) {
    agent.finish();
    EXPECT_THAT(qor.sent(), IsEmpty());
}

}  // namespace
