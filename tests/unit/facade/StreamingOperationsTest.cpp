#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// What the host's streaming operations note for the agent, and what they post.
class StreamingOperations : public FacadeTest {
protected:
    using ParamQueue = channel::ParamQueue;

    /// The registration of a queue, as the agent copies it.
    channel::RepeatRead registrationOf(ParamQueue& target) {
        const auto channel = agent.channel();
        return channel->streams.all().at(&target);
    }
    std::size_t registrations() {
        const auto channel = agent.channel();
        return channel->streams.all().size();
    }
    /// What the agent does once QOR sends the values.
    void activate(ParamQueue& target) {
        const auto channel = agent.channel();
        channel->streams.notePreparation(&target, true, 0,
                                         channel->streams.all().at(&target).names);
    }
    void endAgent() {
        const auto channel = agent.channel();
        channel->agent.askToEnd();
        while (channel->agent.state() == common::ThreadState::running) Sleep(1);
    }
    /// All requests so far, once a ping behind them has been taken.
    std::vector<Cmd> requestsBeforeAPing() {
        EXPECT_TRUE(facade->pingQor(1000));
        auto requests = agent.requests();
        EXPECT_EQ(requests.back().kind, channel::Kind::pingQor);
        requests.pop_back();
        return requests;
    }
    void answerPings() {
        agent.script().onRequest = [](Channel&, const Cmd& command) {
            if (command.replyQueue != nullptr) ScriptedAgent::succeed(command);
        };
    }
    static const channel::CmdDataDtc& dtcOf(const Cmd& request) {
        return dynamic_cast<const channel::CmdDataDtc&>(*request.data);
    }

    ParamQueue queue{4};
    channel::DtcQueue codes{4};
};

TEST_F(StreamingOperations, AStartNotesTheNamesPostsNothingAndIsALineOfTheTrace) {
    answerPings();
    start();
    EXPECT_TRUE(facade->startParamRead(&queue, {"Speed", "Load"}));
    EXPECT_THAT(registrationOf(queue).names, ElementsAre("Speed", "Load"));
    EXPECT_FALSE(registrationOf(queue).prepared);
    EXPECT_THAT(trace(), ElementsAre("1\tQorControlFacade::paramStartRead(Speed", "Load", ")"));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(requestsBeforeAPing(), IsEmpty());
}

TEST_F(StreamingOperations, AStartWorksAndIsTrueEvenBeforeTheAgentThreadRuns) {
    std::atomic<bool> mayRun{false};
    agent.script().atStart = [&mayRun](Channel&) {
        while (!mayRun) Sleep(1);
    };
    facade = std::make_unique<QorControlFacade>("settings.ini", &log, 0u, hostPath);
    EXPECT_TRUE(facade->startParamRead(&queue, {"Speed"}));

    mayRun = true;
    EXPECT_THAT(registrationOf(queue).names, ElementsAre("Speed"));
    EXPECT_FALSE(registrationOf(queue).prepared);
}

TEST_F(StreamingOperations, AStartWithoutNamesIsARegistrationToo) {
    start();
    EXPECT_TRUE(facade->startParamRead(&queue, {}));
    EXPECT_THAT(registrationOf(queue).names, IsEmpty());
    EXPECT_THAT(trace(), ElementsAre("1\tQorControlFacade::paramStartRead()"));
}

TEST_F(StreamingOperations, ASecondStartReplacesTheNamesAndRestartsTheReading) {
    start();
    facade->startParamRead(&queue, {"Speed", "Load"});
    activate(queue);
    EXPECT_TRUE(facade->startParamRead(&queue, {"Voltage"}));
    EXPECT_THAT(registrationOf(queue).names, ElementsAre("Voltage"));
    EXPECT_FALSE(registrationOf(queue).prepared);
    EXPECT_EQ(registrations(), 1u);
}

TEST_F(StreamingOperations, EachQueueHasARegistrationOfItsOwn) {
    start();
    ParamQueue other{1};
    facade->startParamRead(&queue, {"Speed"});
    facade->startParamRead(&other, {"Load"});
    facade->stopParamRead(&queue);
    EXPECT_EQ(registrations(), 1u);
    EXPECT_THAT(registrationOf(other).names, ElementsAre("Load"));
}

TEST_F(StreamingOperations, APercentSignInANameIsTracedAsItIs) {
    start();
    EXPECT_TRUE(facade->startParamRead(&queue, {"Load%", "%s%n%d"}));
    EXPECT_THAT(trace(), ElementsAre("1\tQorControlFacade::paramStartRead(Load%", "%s%n%d", ")"));
}

TEST_F(StreamingOperations, ANullQueueIsTracedAndIgnored) {
    answerPings();
    start();
    EXPECT_TRUE(facade->startParamRead(nullptr, {"Speed"}));
    EXPECT_EQ(registrations(), 0u);
    EXPECT_THAT(trace(), ElementsAre("1\tQorControlFacade::paramStartRead(Speed", ")"));
    EXPECT_TRUE(facade->stopParamRead(nullptr));
    EXPECT_THAT(requestsBeforeAPing(), IsEmpty());
}

TEST_F(StreamingOperations, AStopOfAQueueThatWasNeverRegisteredIsTrueAndPostsNothing) {
    answerPings();
    start();
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_THAT(trace(), ElementsAre("1\tQorControlFacade::paramStopAllRead()"));
    EXPECT_THAT(requestsBeforeAPing(), IsEmpty());
}

TEST_F(StreamingOperations, AStopRightAfterTheStartIsTrueAndPostsNothing) {
    answerPings();
    start();
    facade->startParamRead(&queue, {"Speed"});
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_EQ(registrations(), 0u);
    EXPECT_THAT(requestsBeforeAPing(), IsEmpty());
}

TEST_F(StreamingOperations, AStopOfAnActiveReadingPostsItsNamesWithoutAQueue) {
    answerPings();
    start();
    facade->startParamRead(&queue, {"Speed", "Load"});
    activate(queue);
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_EQ(registrations(), 0u);
    const auto requests = requestsBeforeAPing();
    ASSERT_THAT(requests, SizeIs(1));
    EXPECT_EQ(requests[0].kind, channel::Kind{17u});
    EXPECT_EQ(requests[0].replyQueue, nullptr);
    EXPECT_EQ(requests[0].monitor, nullptr);
    const auto& data = dynamic_cast<const channel::CmdRepeatRead&>(*requests[0].data);
    EXPECT_EQ(data.queue, nullptr);
    EXPECT_THAT(data.names, ElementsAre("Speed", "Load"));
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_THAT(agent.requests(), SizeIs(2));  // of the two stops and the ping
}

TEST_F(StreamingOperations, AStopOfAnActiveReadingFailsWhenTheAgentIsDeadAndStillRemovesIt) {
    start();
    facade->startParamRead(&queue, {"Speed"});
    activate(queue);
    endAgent();
    const auto lines = trace().size();
    EXPECT_FALSE(facade->stopParamRead(&queue));
    EXPECT_EQ(registrations(), 0u);
    EXPECT_EQ(trace().size(), lines + 1);  // the line comes before anything is looked at
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_THAT(agent.requests(), IsEmpty());
}

TEST_F(StreamingOperations, AStopOfAReadingThatIsNotActiveIsTrueThoughTheAgentIsDead) {
    start();
    endAgent();
    EXPECT_TRUE(facade->startParamRead(&queue, {"Speed"}));
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_EQ(registrations(), 0u);
}

TEST_F(StreamingOperations, AStartOfTroubleCodesPostsQueueTimeoutAndPeriodWithoutALine) {
    answerPings();
    start();
    EXPECT_TRUE(facade->startDtcRead(&codes, 700, 250));
    const auto requests = requestsBeforeAPing();
    ASSERT_THAT(requests, SizeIs(1));
    EXPECT_EQ(requests[0].kind, channel::Kind{7u});
    EXPECT_EQ(requests[0].replyQueue, nullptr);
    EXPECT_EQ(requests[0].monitor, nullptr);
    EXPECT_EQ(dtcOf(requests[0]).queue, &codes);
    EXPECT_EQ(dtcOf(requests[0]).statusMask, 700u);
    EXPECT_EQ(dtcOf(requests[0]).periodMs, 250u);
    EXPECT_THAT(trace(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StreamingOperations, AStartOfTroubleCodesWithANullQueueIsPostedAsItIs) {
    answerPings();
    start();
    EXPECT_TRUE(facade->startDtcRead(nullptr, 1, 2));
    EXPECT_EQ(dtcOf(requestsBeforeAPing().at(0)).queue, nullptr);
}

TEST_F(StreamingOperations, AStopOfTroubleCodesPostsThreeZeros) {
    answerPings();
    start();
    EXPECT_TRUE(facade->stopDtcRead());
    const auto requests = requestsBeforeAPing();
    ASSERT_THAT(requests, SizeIs(1));
    EXPECT_EQ(requests[0].kind, channel::Kind{8u});
    EXPECT_EQ(requests[0].replyQueue, nullptr);
    EXPECT_EQ(dtcOf(requests[0]).queue, nullptr);
    EXPECT_EQ(dtcOf(requests[0]).statusMask, 0u);
    EXPECT_EQ(dtcOf(requests[0]).periodMs, 0u);
    EXPECT_THAT(trace(), IsEmpty());
}

TEST_F(StreamingOperations, AfterShutdownTheStartOfTroubleCodesIsFalseAndThatOfValuesTrue) {
    start().shutdown();
    const auto lines = trace().size();
    EXPECT_FALSE(facade->startDtcRead(&codes, 100, 100));
    EXPECT_FALSE(facade->stopDtcRead());
    EXPECT_EQ(trace().size(), lines);
    EXPECT_TRUE(facade->startParamRead(&queue, {"Speed"}));
    EXPECT_TRUE(facade->stopParamRead(&queue));
    EXPECT_THAT(agent.requests(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
