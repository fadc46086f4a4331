#include <thread>

#include "facade/TimedCall.h"
#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

/// The shape that all timed operations share, seen through a ping.
class PingQor : public FacadeTest {};

TEST_F(PingQor, TheRequestCarriesTheUndoubledTimeoutAndAQueueForTheAnswer) {
    succeedAlways();
    EXPECT_TRUE(start().pingQor(500));
    ASSERT_THAT(agent.requests(), SizeIs(1));
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{25u});
    EXPECT_NE(request.replyQueue, nullptr);
    EXPECT_EQ(request.monitor, nullptr);
    EXPECT_EQ(dynamic_cast<channel::CmdDataPing&>(*request.data).timeoutMs, 500u);
}

TEST_F(PingQor, ASuccessWritesNothing) {
    succeedAlways();
    start().pingQor(500);
    EXPECT_THAT(trace(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(PingQor, AFailureIsALineOfTheTraceAloneWithTheElapsedTime) {
    after(37, ScriptedAgent::fail);
    EXPECT_FALSE(start().pingQor(500));
    EXPECT_THAT(trace(), ElementsAre("2\tQorControlFacade::pingQor(), t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(PingQor, OnlyTheResultOneIsSuccess) {
    for (const std::uint32_t result : {0u, 2u, 0xFFFFFFFFu}) {
        agent.script().onRequest = [=](Channel&, const Cmd& command) {
            command.replyQueue->push({result, nullptr});
        };
        EXPECT_FALSE(start().pingQor(500)) << result;
        facade.reset();
    }
}

TEST_F(PingQor, TheElapsedTimeIsADifferenceThatWraps) {
    clock.advance(0xFFFFFFFFu - clock.now() - 9);
    after(37, ScriptedAgent::fail);
    start().pingQor(500);
    EXPECT_THAT(trace(), ElementsAre("2\tQorControlFacade::pingQor(), t: 37 ms"));
}

/// Wakes the caller without an answer, as a signal does that was left over.
void wakeWithoutAnswer(const channel::ProtocolCmd& command) {
    const_cast<common::Event&>(command.replyQueue->pushed()).signal();
}

TEST_F(PingQor, ACallerThatWakesEarlyBehindTheWrapWaitsForTheRestOfItsTime) {
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        clock.advance(150);
        wakeWithoutAnswer(command);
        Sleep(50);
        ScriptedAgent::succeed(command);
    };
    start();
    clock.advanceToBeforeWrap(100);
    EXPECT_TRUE(facade->pingQor(1000));
}

TEST_F(PingQor, ACallerThatWakesLateBehindTheWrapWaitsNoLonger) {
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        while (!command.replyQueue->isGivenUp()) {  // it may not have begun to wait yet
            clock.advance(20000);
            wakeWithoutAnswer(command);
            Sleep(20);
        }
    };
    start();
    clock.advanceToBeforeWrap(100);
    EXPECT_FALSE(facade->pingQor(10000));
}

TEST_F(PingQor, WithoutALimitItWaitsForTheAnswer) {
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        Sleep(100);
        clock.advance(0x70000000u);
        ScriptedAgent::succeed(command);
    };
    EXPECT_TRUE(start().pingQor(0xFFFFFFFFu));
}

TEST(Waits, AreTwiceTheTimeoutInWrapAroundArithmetic) {
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 0), 0u);
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 1), 2u);
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 5000), 10000u);
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 0x7FFFFFFFu), 0xFFFFFFFEu);
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 0x80000000u), 0u);
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 0xFFFFFFFEu), 0xFFFFFFFCu);
    EXPECT_EQ(channel::waitMs(channel::Wait::twice, 0xFFFFFFFFu), 0xFFFFFFFFu);
}

/// Waits that no answer ends.
class SilentAgent : public RealTimeFacadeTest {
protected:
    std::uint32_t msOf(unsigned int timeoutMs) {
        const std::uint32_t begin = GetTickCount();
        EXPECT_FALSE(facade->pingQor(timeoutMs));
        return GetTickCount() - begin;
    }
    static constexpr std::uint32_t tickStepMs = 20;
};

TEST_F(SilentAgent, APingGivesUpAfterTwiceItsTimeout) {
    start();
    const std::uint32_t ms = msOf(150);
    EXPECT_GE(ms + tickStepMs, 300u);
    EXPECT_LE(ms, 600u);
    ASSERT_THAT(trace(), SizeIs(1));
    EXPECT_THAT(trace().at(0), MatchesRegex("2\tQorControlFacade::pingQor\\(\\), t: 3.. ms"));
}

TEST_F(SilentAgent, ATimeoutOf0FailsAtOnceAndWritesItsLine) {
    start();
    EXPECT_LE(msOf(0), 100u);
    EXPECT_THAT(trace(), SizeIs(1));
}

TEST_F(SilentAgent, ATimeoutOf0x80000000WrapsToAWaitOf0) {
    start();
    EXPECT_LE(msOf(0x80000000u), 100u);
}

TEST_F(SilentAgent, ATimeoutOf1WaitsAMomentAndFails) {
    start();
    EXPECT_LE(msOf(1), 150u);
}

TEST_F(SilentAgent, ADescriptionIsGivenUpAfterThreeSeconds) {
    start();
    wex::ParamDescription description{};
    const std::uint32_t begin = GetTickCount();
    EXPECT_FALSE(facade->getParamDescription("Speed", description));
    const std::uint32_t ms = GetTickCount() - begin;
    EXPECT_GE(ms + tickStepMs, 3000u);
    EXPECT_LE(ms, 3500u);
}

TEST_F(SilentAgent, AReadGivesUpAfterTwiceItsTimeout) {
    start();
    std::vector<double> values{4.0};
    const std::uint32_t begin = GetTickCount();
    EXPECT_FALSE(facade->getParamData("Speed", values, 100));
    EXPECT_GE(GetTickCount() - begin + tickStepMs, 200u);
    EXPECT_THAT(values, ElementsAre(4.0));
}

/// An answer belongs to the call that asked for it and to no other.
class LateAnswers : public RealTimeFacadeTest {
protected:
    /// The first call is not answered in time; `atSecond` is what the agent does then.
    bool secondCall(const std::function<void(const Cmd& first, const Cmd& second)>& atSecond) {
        agent.script().onRequest = [this, atSecond](Channel&, const Cmd& command) {
            const auto all = agent.requests();
            if (all.size() == 2) atSecond(all[0], command);
        };
        start();
        EXPECT_FALSE(facade->pingQor(10));
        if (betweenCalls) betweenCalls(agent.requests().at(0));
        return facade->pingQor(300);
    }
    std::function<void(const Cmd& first)> betweenCalls;
};

TEST_F(LateAnswers, TheNextCallGetsItsOwnAnswer) {
    betweenCalls = ScriptedAgent::fail;
    EXPECT_TRUE(secondCall([](const Cmd&, const Cmd& second) { ScriptedAgent::succeed(second); }));
}

TEST_F(LateAnswers, OneThatIsThereBeforeTheNextCallIsNotTakenForItsAnswer) {
    betweenCalls = [](const Cmd& first) { ScriptedAgent::succeed(first); };
    EXPECT_FALSE(secondCall([](const Cmd&, const Cmd& second) { ScriptedAgent::fail(second); }));
}

TEST_F(LateAnswers, OneThatComesDuringTheNextCallIsNotTakenForItsAnswer) {
    EXPECT_FALSE(secondCall([](const Cmd& first, const Cmd& second) {
        ScriptedAgent::succeed(first);
        Sleep(50);
        ScriptedAgent::fail(second);
    }));
}

TEST_F(LateAnswers, OneThatComesDuringTheNextCallDoesNotEndItsWait) {
    EXPECT_TRUE(secondCall([](const Cmd& first, const Cmd& second) {
        ScriptedAgent::fail(first);
        Sleep(50);
        ScriptedAgent::succeed(second);
    }));
}

TEST_F(LateAnswers, ManyOfThemAreAllSurvived) {
    start();
    for (std::size_t i = 0; i < 50; ++i) {
        facade->pingQor(0);
        while (agent.requests().size() <= i) Sleep(1);  // a full command queue would lose some
    }
    for (const Cmd& request : agent.requests()) ScriptedAgent::succeed(request);
    EXPECT_FALSE(facade->pingQor(0));
}

TEST_F(LateAnswers, ASecondAnswerToACallIsNotTakenByTheNext) {
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        if (agent.requests().size() > 1) return;
        ScriptedAgent::succeed(command);
        Sleep(5);
        ScriptedAgent::succeed(command);
    };
    start();
    EXPECT_TRUE(facade->pingQor(100));
    Sleep(50);
    EXPECT_FALSE(facade->pingQor(20));
}

TEST_F(LateAnswers, ASignalThatAQuickAnswerLeftDoesNotEndTheNextWait) {
    std::atomic<DWORD> delayMs{0};
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        if (delayMs != 0) Sleep(delayMs);
        ScriptedAgent::succeed(command);
    };
    start();
    for (int round = 0; round < 20; ++round) {
        delayMs = 0;
        for (int i = 0; i < 10; ++i) ASSERT_TRUE(facade->pingQor(100));
        delayMs = 10;
        ASSERT_TRUE(facade->pingQor(100)) << round;
    }
}

/// A caller says so when it no longer waits.
class GivingUp : public RealTimeFacadeTest {
protected:
    std::shared_ptr<channel::AnswerQueue> queueOfRequest(std::size_t number) {
        while (agent.requests().size() <= number) Sleep(1);
        return agent.requests().at(number).replyQueue;
    }
};

TEST_F(GivingUp, ItIsKnownToTheAgentOnceTheTimeHasPassed) {
    std::atomic<bool> atRequest{true};
    agent.script().onRequest = [&](Channel&, const Cmd& c) {
        atRequest = c.replyQueue->isGivenUp();
    };
    start();
    EXPECT_FALSE(facade->pingQor(500));
    EXPECT_FALSE(atRequest);
    EXPECT_TRUE(queueOfRequest(0)->isGivenUp());
}

TEST_F(GivingUp, AnAnsweredCallDoesNotGiveUp) {
    failAlways();
    start();
    EXPECT_FALSE(facade->pingQor(1000));
    EXPECT_FALSE(queueOfRequest(0)->isGivenUp());
}

TEST_F(GivingUp, ACallThatWaitsNoTimeAtAllLeavesItsRequestToTheAgent) {
    start();
    EXPECT_FALSE(facade->pingQor(0));
    EXPECT_FALSE(facade->pingQor(0x80000000u));  // twice that is nothing
    EXPECT_FALSE(queueOfRequest(0)->isGivenUp());
    EXPECT_FALSE(queueOfRequest(1)->isGivenUp());
}

TEST_F(GivingUp, TheQueueLivesAsLongAsItsRequestAndNoLonger) {
    start();
    EXPECT_FALSE(facade->pingQor(10));
    const std::weak_ptr<channel::AnswerQueue> queue = queueOfRequest(0);
    EXPECT_FALSE(queue.expired());
    agent.forgetRequests();
    for (int i = 0; i < 11; ++i) {  // all slots of the command queue are written anew
        facade->pingQor(0);
        while (agent.requests().size() <= static_cast<std::size_t>(i)) Sleep(1);
    }
    agent.forgetRequests();
    EXPECT_TRUE(queue.expired());
}

/// Several host threads at once.
class ManyThreads : public RealTimeFacadeTest {};

TEST_F(ManyThreads, EachCallOfTheSameOperationGetsItsOwnAnswer) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        auto answer = std::make_shared<channel::CmdDataParamInfo>(
            dynamic_cast<channel::CmdDataParamInfo&>(*command.data));
        answer->description.text1 = "about " + answer->name;
        ScriptedAgent::succeed(command, answer);
    };
    start();
    std::atomic<int> right{0};
    std::vector<std::thread> hosts;
    for (int host = 0; host < 6; ++host)
        hosts.emplace_back([this, host, &right] {
            for (int call = 0; call < 50; ++call) {
                const std::string name = std::to_string(host) + "/" + std::to_string(call);
                wex::ParamDescription description{};
                if (facade->getParamDescription(name, description) && description.name == name &&
                    description.text1 == "about " + name)
                    ++right;
            }
        });
    for (auto& host : hosts) host.join();
    EXPECT_EQ(right, 6 * 50);
}

TEST_F(ManyThreads, RequestsAreTakenInTheOrderOfTheirPush) {
    std::atomic<bool> mayGoOn{false};
    agent.script().onRequest = [&](Channel&, const Cmd&) {
        while (!mayGoOn) Sleep(1);
    };
    start();
    for (unsigned int i = 0; i < 10; ++i) {
        QorControlFacade::EcuConnect settings{};
        settings.protocol = i;
        facade->connect(settings, QorControlFacade::EcuConnect::Default, nullptr);
    }
    mayGoOn = true;
    while (agent.requests().size() < 10) Sleep(1);
    std::vector<unsigned int> order;
    for (const Cmd& request : agent.requests())
        order.push_back(dynamic_cast<channel::CmdDataConnect&>(*request.data).settings.protocol);
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

}  // namespace
