#include "FacadeFixture.h"
#include "support/FakeMonitor.h"
#include "ThreadTimer.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class SetEcuSegment : public FacadeTest {
protected:
    bool select(IProgressMonitor* with = nullptr) {
        return facade->setEcuSegment("Working%s", true, with);
    }
    FakeMonitor monitor;
};

TEST_F(SetEcuSegment, TheRequestIsLoggedInTheTraceAndForTheHost) {
    succeedAlways();
    start();
    EXPECT_TRUE(select());
    EXPECT_TRUE(facade->setEcuSegment("ReferencePage", false, nullptr));
    EXPECT_THAT(trace(), ElementsAre("1\tSetting segment = 'Working%s' [1]",
                                     "1\tSetting segment = 'ReferencePage' [0]"));
    EXPECT_THAT(log.lines(), ElementsAre("info: SET-segment(Working%s): [1]",
                                         "info: SET-segment(ReferencePage): [0]"));
}

TEST_F(SetEcuSegment, TheLinesComeBeforeTheRequest) {
    succeedAlways();
    const auto seen = watchFirstLine();
    start();
    select();
    EXPECT_EQ(seen->traced, 1u);
    EXPECT_EQ(seen->posted, 0u);
}

TEST_F(SetEcuSegment, NameFlagAndMonitorTravelAndAnAnswerIsWanted) {
    succeedAlways();
    start();
    select(&monitor);
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{16u});
    EXPECT_EQ(request.monitor, &monitor);
    EXPECT_NE(request.replyQueue, nullptr);
    const auto& sent = dynamic_cast<channel::CmdDataSegment&>(*request.data);
    EXPECT_EQ(sent.segment, "Working%s");
    EXPECT_TRUE(sent.flag);
    EXPECT_EQ(monitor.strayCalls + monitor.polls, 0);
}

TEST_F(SetEcuSegment, WithoutAMonitorAnAnswerIsWantedAllTheSame) {
    succeedAlways();
    start();
    EXPECT_TRUE(select(nullptr));
    EXPECT_EQ(agent.requests().at(0).monitor, nullptr);
    EXPECT_NE(agent.requests().at(0).replyQueue, nullptr);
}

TEST_F(SetEcuSegment, OnlyTheResultOneIsSuccessAndAFailureAddsNoLine) {
    std::atomic<std::uint32_t> result{0};
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        command.replyQueue->push({result, nullptr});
    };
    start();
    for (const std::uint32_t told : {0u, 2u, 0xFFFFFFFFu}) {
        result = told;
        EXPECT_FALSE(select()) << told;
    }
    EXPECT_THAT(trace(), SizeIs(3));
    EXPECT_THAT(log.lines(), SizeIs(3));
}

TEST_F(SetEcuSegment, ItWaitsWithoutALimitAndIsNoConnect) {
    bool connecting = true;
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        Sleep(50);
        clock.advance(0x7FFFFFFFu);
        connecting = facade->isConnecting();
        ScriptedAgent::succeed(command);
    };
    start();
    EXPECT_TRUE(select(&monitor));
    EXPECT_FALSE(connecting);
}

TEST_F(SetEcuSegment, AnAgentThatEndsEndsTheWait) {
    agent.script().onRequest = [](Channel& channel, const Cmd&) { channel.agent.askToEnd(); };
    start();
    EXPECT_FALSE(select());
}

TEST_F(SetEcuSegment, TheCallersWindowMessagesAreDispatchedWhileItWaits) {
    ThreadTimer timer(10);
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        for (int i = 0; i < 2000 && !timer.hasRun(); ++i) Sleep(1);
        ScriptedAgent::succeed(command);
    };
    start();
    EXPECT_TRUE(select());
    EXPECT_TRUE(timer.hasRun());
}

TEST_F(SetEcuSegment, WithoutALogOnlyTheTraceIsWritten) {
    succeedAlways();
    facade = std::make_unique<QorControlFacade>("s", nullptr, 0u, hostPath);
    EXPECT_TRUE(select());
    EXPECT_THAT(trace(), SizeIs(1));
}

TEST_F(SetEcuSegment, AfterAShutdownItFailsWithoutALine) {
    start().shutdown();
    const auto lines = trace().size();
    EXPECT_FALSE(select(&monitor));
    EXPECT_THAT(trace(), SizeIs(lines));
    EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
