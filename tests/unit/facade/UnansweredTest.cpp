// Why there was no answer in time: the agent at other requests, one that was pushed out, one that
// was under way.

#include <memory>
#include <thread>
#include <vector>

#include "facade/FacadeImpl.h"
#include "facade/Quietly.h"
#include "FacadeFixture.h"
#include "qorcontrol/Outcome.h"
#include "qorcontrol/Waiting.h"

using qorcontrol::Cause;
using qorcontrol::lastOutcome;

namespace {

/// An agent that takes requests only when the test lets it.
class Unanswered : public RealTimeFacadeTest {
protected:
    Unanswered() {
        agent.script().onRequest = [this](Channel& channel, const Cmd& command) {
            channel.backlog.noteTaken(command.number);
            if (command.replyQueue != nullptr) command.replyQueue->notePresent(present);
            while (isHeld) Sleep(1);
            if (command.replyQueue != nullptr && answers) ScriptedAgent::succeed(command);
        };
    }
    ~Unanswered() override {
        isHeld = false;
        for (std::thread& host : hosts) host.join();
    }

    /// The agent is at this one, until it is let go.
    void keepBusy() {
        isHeld = true;
        facade->stopDtcRead();
        while (agent.requests().empty()) Sleep(1);
    }
    /// On a thread of its own; the outcome is there when that has ended.
    void ping(unsigned int timeoutMs, Cause& cause) {
        const std::uint32_t before = agent.channel()->backlog.lastNumber();
        hosts.emplace_back([this, timeoutMs, &cause] {
            facade->pingQor(timeoutMs);
            cause = lastOutcome().cause;
        });
        for (int i = 0; i < 1000 && agent.channel()->backlog.lastNumber() == before; ++i) Sleep(1);
        Sleep(5);  // and pushed
    }
    void join() {
        for (std::thread& host : hosts) host.join();
        hosts.clear();
    }

    std::atomic<bool> isHeld{false};
    std::atomic<bool> answers{true};
    std::atomic<Cause> present{Cause::agentBusy};
    std::vector<std::thread> hosts;
};

TEST_F(Unanswered, BehindOtherRequestsIsThatTheAgentWasBusy) {
    start();
    keepBusy();
    EXPECT_FALSE(facade->pingQor(20));
    EXPECT_EQ(lastOutcome().cause, Cause::agentBusy);
    EXPECT_GE(lastOutcome().elapsedMs, 40u);
}

TEST_F(Unanswered, PushedOutIsToldOfTheTenAndNotOfTheEleventh) {
    start();
    keepBusy();
    Cause causes[11] = {};
    for (Cause& cause : causes) ping(2000, cause);
    isHeld = false;
    join();
    for (int i = 0; i < 10; ++i) EXPECT_EQ(causes[i], Cause::pushedOut) << "request " << i;
    EXPECT_EQ(causes[10], Cause::none);
}

TEST_F(Unanswered, BehindAFullQueueIsThatTheAgentWasBusyWhileItTookNoLaterOne) {
    start();
    keepBusy();
    Cause causes[11] = {};
    for (Cause& cause : causes) ping(100, cause);
    join();
    for (const Cause cause : causes) EXPECT_EQ(cause, Cause::agentBusy);
}

TEST_F(Unanswered, WhatIsUnderWayTellsHowFarItIs) {
    answers = false;
    start();
    for (const Cause how :
         {Cause::agentBusy, Cause::noConnection, Cause::qorSilent, Cause::noData}) {
        present = how;
        EXPECT_FALSE(facade->pingQor(20));
        EXPECT_EQ(lastOutcome().cause, how);
    }
}

TEST_F(Unanswered, ACallThatHasBegunIsWaitedForEvenIfItIsNotWantedAnyMore) {
    present = Cause::qorSilent;
    start();
    isHeld = true;
    std::atomic<bool> isWanted{true};
    std::atomic<bool> hasEnded{false};
    hosts.emplace_back([&] {
        quietly::connect(FacadeAccess::stateOf(*facade), {}, QorControlFacade::EcuConnect::Default,
                         nullptr, [&] { return isWanted.load(); });
        hasEnded = true;
    });
    while (agent.requests().empty() || agent.requests().back().replyQueue->present() == Cause::none)
        Sleep(1);
    isWanted = false;
    Sleep(100);
    EXPECT_FALSE(hasEnded);
    isHeld = false;
    join();
    EXPECT_TRUE(hasEnded);
}

TEST_F(Unanswered, ThatItIsGivenUpIsToldToTheAgent) {
    start();
    keepBusy();
    EXPECT_FALSE(facade->pingQor(20));
    isHeld = false;
    while (agent.requests().size() < 2) Sleep(1);
    EXPECT_TRUE(agent.requests().back().replyQueue->isGivenUp());
}

TEST_F(Unanswered, WithoutAWaitIsThatNobodyHasWaited) {
    start();
    keepBusy();
    for (const unsigned int none : {0u, 0x80000000u}) {
        EXPECT_FALSE(facade->pingQor(none));
        EXPECT_EQ(lastOutcome().cause, Cause::notReady);
        EXPECT_THAT(lastOutcome().sentence, testing::HasSubstr("with a time-out of 0"));
        EXPECT_EQ(lastOutcome().check, "Give a time-out if the result is wanted.");
    }
}

TEST_F(Unanswered, OfManyNoneLeavesItsQueueBehind) {
    answers = false;
    start();
    std::vector<std::weak_ptr<channel::AnswerQueue>> queues;
    for (int i = 0; i < 100; ++i) {
        facade->pingQor(1);
        while (agent.requests().empty()) Sleep(1);
        queues.emplace_back(agent.requests().back().replyQueue);
        agent.forgetRequests();
    }
    // The ring of the agent's requests keeps copies of the last ten.
    std::size_t kept = 0;
    for (const auto& queue : queues) kept += queue.expired() ? 0 : 1;
    EXPECT_LE(kept, 12u);
}

TEST_F(Unanswered, AQueueThatIsUsedAgainTellsNothingOfBefore) {
    present = Cause::qorSilent;  // until it had answered
    start();
    ASSERT_TRUE(facade->pingQor(1000));
    keepBusy();
    EXPECT_FALSE(facade->pingQor(20));
    EXPECT_EQ(lastOutcome().cause, Cause::agentBusy);
}

TEST_F(Unanswered, AWaitWithoutALimitEndsWhenTheRequestIsPushedOut) {
    start();
    keepBusy();
    Cause cause = Cause::none;
    hosts.emplace_back([&] {
        EXPECT_FALSE(qorcontrol::openModelAndWait(*facade, {}));
        cause = lastOutcome().cause;
    });
    while (agent.channel()->backlog.lastNumber() < 2) Sleep(1);
    Sleep(5);
    for (int i = 0; i < 10; ++i) facade->stopDtcRead();
    isHeld = false;
    join();
    EXPECT_EQ(cause, Cause::pushedOut);
}

TEST_F(Unanswered, AWaitWithoutALimitEndsAlsoWhenItWasPushedOutByThoseWithEarlierNumbers) {
    start();
    keepBusy();
    std::atomic<Cause> cause{Cause::none};
    for (int i = 0; i < 10; ++i) agent.channel()->backlog.nextNumber();  // of threads in no hurry
    hosts.emplace_back([&] {
        EXPECT_FALSE(qorcontrol::openModelAndWait(*facade, {}));
        cause = lastOutcome().cause;
    });
    while (agent.channel()->backlog.lastNumber() < 12) Sleep(1);
    Sleep(5);
    for (std::uint32_t number = 2; number < 12; ++number) {
        Cmd command;
        command.number = number;
        agent.channel()->commandQueue.push(command);
    }
    isHeld = false;
    for (int i = 0; i < 2000 && cause == Cause::none; ++i) Sleep(1);
    EXPECT_EQ(cause, Cause::pushedOut);
    if (cause == Cause::none) facade->shutdown();
    join();
}

TEST(Backlog, KnowsThatTheQueueWasEmptyAfterAMomentOnlyTheSecondTime) {
    channel::Backlog backlog;
    const std::uint32_t before = backlog.empties();
    EXPECT_FALSE(backlog.wasEmptySince(before));
    backlog.noteEmpty();
    EXPECT_FALSE(backlog.wasEmptySince(before));
    backlog.noteEmpty();
    EXPECT_TRUE(backlog.wasEmptySince(before));
    EXPECT_FALSE(backlog.wasEmptySince(backlog.empties()));
}

TEST(Backlog, GoesOnWhereTheNumbersBeginAgain) {
    channel::Backlog backlog;
    backlog.noteTaken(0xFFFFFFFFu);
    EXPECT_TRUE(backlog.hasPassed(0xFFFFFFFEu));
    EXPECT_FALSE(backlog.hasPassed(0));
    backlog.noteTaken(2);
    EXPECT_TRUE(backlog.hasPassed(0xFFFFFFFEu));
    EXPECT_FALSE(backlog.hasPassed(2));
}

}  // namespace
