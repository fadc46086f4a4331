// Requests whose caller has been told that they failed, before the agent came to them.

#include "AgentFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class GivenUp : public AgentTest {
protected:
    GivenUp() { qor.knows("S1", 5); }

    void postWrite() {
        auto request = std::make_shared<channel::CmdDataParamData>("S1", 500u);
        request->values = {1.0};
        post(channel::Kind::setParamData, std::move(request), answers);
    }
};

TEST_F(GivenUp, ARequestIsNotBegunAndNotAnswered) {
    postWrite();
    answers->giveUp();
    agent.step();
    channel::CmdResponse answer;
    EXPECT_FALSE(answers->pop(answer, 0));
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(GivenUp, TheNextRequestIsCarriedOut) {
    postWrite();
    answers->giveUp();
    agent.step();
    answers = std::make_shared<channel::AnswerQueue>(1);
    postWrite();
    agent.step();
    channel::CmdResponse answer;
    EXPECT_TRUE(answers->pop(answer, 0));
    EXPECT_EQ(answer.result, 1u);
    EXPECT_THAT(sentIds(), ElementsAre(3, 7));
}

TEST_F(GivenUp, AWriteIsNotSentIfThatHappensWhileItsNameIsResolved) {
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo& question) {
        CommandGetParamInfo answer(question.payload());
        answer.paramIndex = 5;
        answer.threeArrays = false;
        qor.send(answer);
        answers->giveUp();
        return true;
    });
    postWrite();
    agent.step();
    EXPECT_THAT(sentIds(), ElementsAre(3));
}

TEST_F(GivenUp, WhatNobodyEverWaitedForIsCarriedOut) {
    post(channel::Kind::connectCanBus,
         std::make_shared<channel::CmdCanBusConn>(QorControlFacade::CanBusConnect{},
                                                  QorControlFacade::EcuConnect::Default),
         nullptr);
    agent.step();
    EXPECT_THAT(sentIds(), ElementsAre(16));
}

}  // namespace
