#include <thread>

#include "FacadeFixture.h"
#include "support/FakeMonitor.h"
#include "ThreadTimer.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using EcuConnect = QorControlFacade::EcuConnect;

class Connect : public FacadeTest {
protected:
    Connect() {
        settings.protocol = 2;
        settings.protocolOption = 3;
        settings.optionFlag = true;
        settings.kLineBaudRate = 10400;
        settings.canBaudRate = 500000;
        settings.refreshPeriodMs = 200;
        settings.canRequestId = 0x7E0;
        settings.canResponseId = 0xFFFFFFFFu;
        settings.addressByte1 = 0xF1;
        settings.addressByte2 = 0x80;
        settings.addressWord = 77;
        settings.extraFlag = true;
        settings.securityDll = "c:\\100%s.dll";
        settings.finalFlag = true;
    }

    EcuConnect settings{};
    FakeMonitor monitor;
};

TEST_F(Connect, TheRequestIsLoggedInTheTraceAndForTheHost) {
    start().connect(settings, EcuConnect::SecurityAccess, nullptr);
    EXPECT_THAT(trace(),
                ElementsAre("1\tConnecting type = 2, proto = 2, secdll = 'c:\\100%s.dll'"));
    EXPECT_THAT(log.lines(),
                ElementsAre("info: CONNECT-type(2): [2 3 10400 500000 200 0x000007E0 0xFFFFFFFF "
                            "241 128 c:\\100%s.dll]"));
}

TEST_F(Connect, TheLinesComeBeforeTheRequest) {
    const auto seen = watchFirstLine();
    start().connect(settings, EcuConnect::Default, nullptr);
    EXPECT_EQ(seen->traced, 1u);
    EXPECT_EQ(seen->posted, 0u);
}

TEST_F(Connect, WithoutAMonitorItReturnsAtOnceAndWantsNoAnswer) {
    EXPECT_TRUE(start().connect(settings, EcuConnect::Alternative, nullptr));
    EXPECT_FALSE(facade->isConnecting());
    while (agent.requests().empty()) Sleep(1);
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{3u});
    EXPECT_EQ(request.replyQueue, nullptr);
    EXPECT_EQ(request.monitor, nullptr);
    EXPECT_EQ(dynamic_cast<channel::CmdDataConnect&>(*request.data).type, EcuConnect::Alternative);
}

TEST_F(Connect, TheRecordTravelsWholeAndTheMonitorWithIt) {
    succeedAlways();
    start().connect(settings, EcuConnect::Default, &monitor);
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.monitor, &monitor);
    const EcuConnect& sent = dynamic_cast<channel::CmdDataConnect&>(*request.data).settings;
    EXPECT_EQ(sent.protocolOption, 3u);
    EXPECT_TRUE(sent.optionFlag);
    EXPECT_EQ(sent.addressByte2, 0x80);
    EXPECT_EQ(sent.addressWord, 77u);
    EXPECT_TRUE(sent.extraFlag);
    EXPECT_EQ(sent.securityDll, "c:\\100%s.dll");
    EXPECT_TRUE(sent.finalFlag);
}

TEST_F(Connect, WithAMonitorTheAgentsAnswerDecides) {
    succeedAlways();
    EXPECT_TRUE(start().connect(settings, EcuConnect::Default, &monitor));
    facade.reset();
    failAlways();
    EXPECT_FALSE(start().connect(settings, EcuConnect::Default, &monitor));
    EXPECT_THAT(log.lines(), SizeIs(2));  // the requests; nothing tells how they ended
    EXPECT_EQ(monitor.strayCalls + monitor.polls, 0);
}

TEST_F(Connect, OnlyAMonitoredConnectThatWaitsIsConnecting) {
    bool during = false;
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        Sleep(20);
        during = facade->isConnecting();
        ScriptedAgent::fail(command);
    };
    start();
    EXPECT_FALSE(facade->isConnecting());
    facade->connect(settings, EcuConnect::Default, &monitor);
    EXPECT_TRUE(during);
    EXPECT_FALSE(facade->isConnecting());
}

TEST_F(Connect, ItIsConnectingOnceTheRequestIsPosted) {
    std::atomic<bool> mayGoOn{false};
    agent.script().onRequest = [&](Channel& channel, const Cmd& command) {
        while (!mayGoOn) Sleep(1);
        if (command.replyQueue != nullptr) ScriptedAgent::fail(command);
        if (command.replyQueue != nullptr) channel.agent.askToEnd();
    };
    start();
    for (int i = 0; i < 11; ++i) {  // one for the agent, ten for the queue: the next one waits
        facade->stopDtcRead();
        if (i == 0)
            while (agent.requests().empty()) Sleep(1);
    }
    std::vector<bool> duringThePost;
    const auto sleepAsBefore = clock.onSleep;
    clock.onSleep = [&](unsigned int ms) {
        if (!mayGoOn) duringThePost.push_back(facade->isConnecting());
        mayGoOn = true;
        sleepAsBefore(ms);
    };
    facade->connect(settings, EcuConnect::Default, &monitor);
    EXPECT_THAT(duringThePost, ElementsAre(false));
    clock.onSleep = sleepAsBefore;
    facade.reset();
}

TEST_F(Connect, AnAgentThatEndsEndsTheWait) {
    agent.script().onRequest = [](Channel& channel, const Cmd&) { channel.agent.askToEnd(); };
    EXPECT_FALSE(start().connect(settings, EcuConnect::Default, &monitor));
    EXPECT_FALSE(facade->isConnecting());
}

TEST_F(Connect, TheCallersWindowMessagesAreDispatchedWhileItWaits) {
    ThreadTimer timer(10);
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        for (int i = 0; i < 2000 && !timer.hasRun(); ++i) Sleep(1);
        ScriptedAgent::succeed(command);
    };
    EXPECT_TRUE(start().connect(settings, EcuConnect::Default, &monitor));
    EXPECT_TRUE(timer.hasRun());
}

TEST_F(Connect, WithoutALogOnlyTheTraceIsWritten) {
    facade = std::make_unique<QorControlFacade>("s", nullptr, 0u, hostPath);
    EXPECT_TRUE(facade->connect(settings, EcuConnect::Default, nullptr));
    EXPECT_THAT(trace(), SizeIs(1));
    EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
