// Agent threads that end in other ways than by returning, and one that begins too late.

#include <windows.h>

#include <atomic>

#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class LostAgent : public RealTimeFacadeTest {
protected:
    /// Until the system says that the thread has ended, whatever the thread itself has noted.
    void awaitEnd() {
        const auto channel = agent.channel();
        while (channel->agent.state() == common::ThreadState::running) Sleep(1);
    }
    /// The agent answers one read and then ends in the middle of the next request.
    void endAfterOneRead() {
        agent.script().onRequest = [this](Channel&, const Cmd& command) {
            if (agent.requests().size() > 1) ExitThread(0);
            ScriptedAgent::succeed(command, valuesOf({7.0}));
        };
        start(60000);
        EXPECT_TRUE(facade->getParamData("Speed", values, 1000));
        EXPECT_FALSE(facade->pingQor(100));
        awaitEnd();
        EXPECT_THAT(agent.requests(), SizeIs(2));
    }

    std::vector<double> values;
};

TEST_F(LostAgent, ThatEndedWithoutReturningHasEveryPostingOperationFailAtOnce) {
    endAfterOneRead();
    const DWORD begin = GetTickCount();
    EXPECT_FALSE(facade->pingQor(5000));
    EXPECT_FALSE(facade->getParamData("Load", values, 5000));
    EXPECT_FALSE(facade->connect({}, QorControlFacade::EcuConnect::Default, nullptr));
    EXPECT_FALSE(facade->setEcuSegment("WorkingPage", true, nullptr));
    EXPECT_FALSE(facade->openModel({}));
    EXPECT_FALSE(facade->connectCanBus({}, QorControlFacade::EcuConnect::Default));
    EXPECT_FALSE(facade->startDtcRead(nullptr, 100, 100));
    EXPECT_FALSE(facade->stopDtcRead());
    EXPECT_LT(GetTickCount() - begin, 1000u);
    EXPECT_THAT(agent.requests(), SizeIs(2));
}

TEST_F(LostAgent, ThatEndedWithoutReturningLeavesNoLineOfACallThatNobodyHasTaken) {
    endAfterOneRead();
    const std::size_t before = trace().size();
    EXPECT_FALSE(facade->pingQor(5000));
    EXPECT_FALSE(facade->getParamData("Load", values, 5000));
    QorControlFacade::KwpCommand kwp{1, "10 03", 0};
    EXPECT_FALSE(facade->sendKwpCommand(kwp, 5000));
    EXPECT_THAT(trace(), SizeIs(before));
}

TEST_F(LostAgent, ThatEndsRightBehindItsAnswerHasGivenIt) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        ScriptedAgent::succeed(command);
        ExitThread(0);
    };
    start(60000);
    EXPECT_TRUE(facade->pingQor(5000));
}

TEST_F(LostAgent, ThatEndedWithoutReturningLeavesTheCacheReadable) {
    endAfterOneRead();
    values.clear();
    EXPECT_TRUE(facade->getParamData("Speed", values, 1000));
    EXPECT_THAT(values, ElementsAre(7.0));
}

TEST_F(LostAgent, ThatEndedWithoutReturningDoesNotHoldUpAShutdown) {
    endAfterOneRead();
    facade->shutdown();
    for (const std::string& line : trace()) EXPECT_EQ(line.find("still active"), std::string::npos);
    const DWORD begin = GetTickCount();
    facade->shutdown();
    EXPECT_LT(GetTickCount() - begin, 1000u);
}

TEST_F(LostAgent, ThatHasFailedAndOnlyClearsUpHasEveryOperationFailAtOnce) {
    start(60000);
    const auto channel = agent.channel();
    channel->agent.noteFailure();
    EXPECT_FALSE(facade->pingQor(5000));
    EXPECT_FALSE(facade->getParamData("Load", values, 5000));
    EXPECT_FALSE(facade->connect({}, QorControlFacade::EcuConnect::Default, nullptr));
    EXPECT_THAT(agent.requests(), SizeIs(0));
    facade->shutdown();  // does not wait for it
    EXPECT_TRUE(channel->agent.mayGoOn());
    channel->agent.askToEnd();
    while (!agent.hasEnded()) Sleep(1);
}

class LateAgent : public FacadeTest {};

TEST_F(LateAgent, ThatFirstRunsWhenItsFacadeIsGoneFindsItsStateAndEnds) {
    std::atomic<bool> mayRun{false};
    std::atomic<bool> found{false};
    agent.script().beforeStart = [&] {
        while (!mayRun) Sleep(1);
    };
    agent.script().atStart = [&](Channel& channel) {
        found = channel.settingsPath == "settings.ini" && !channel.agent.mayGoOn();
    };
    facade = std::make_unique<QorControlFacade>("settings.ini", &log, 0, hostPath);
    facade.reset();
    mayRun = true;
    while (!agent.hasEnded()) Sleep(1);
    EXPECT_TRUE(found);
}

}  // namespace
