#include "agent/ConnectRecord.h"
#include "AgentFixture.h"
#include "common/Paths.h"
#include "support/FakeMonitor.h"

namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

using EcuConnect = QorControlFacade::EcuConnect;

/// Every field with a value of its own.
EcuConnect settingsOfAnEcu() {
    EcuConnect settings;
    settings.protocol = 3;
    settings.protocolOption = 0x11;
    settings.optionFlag = false;
    settings.kLineBaudRate = 0x12;
    settings.canBaudRate = 0x13;
    settings.refreshPeriodMs = 0x14;
    settings.canRequestId = 0x15;
    settings.canResponseId = 0x16;
    settings.addressByte1 = 0x17;
    settings.addressByte2 = 0x18;
    settings.addressWord = 0x19;
    settings.extraFlag = false;
    settings.securityDll = "c:\\s.dll";
    settings.finalFlag = false;
    return settings;
}

TEST(ConnectRecord, ProtocolsOneToFourTravelAndAllOthersAreOne) {
    EcuConnect settings = settingsOfAnEcu();
    const std::pair<unsigned int, unsigned int> cases[] = {
        {0, 1}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 1}, {7, 1}, {0xFFFFFFFFu, 1}};
    for (const auto& [given, sent] : cases) {
        settings.protocol = given;
        EXPECT_EQ(makeConnectRecord(settings, EcuConnect::Default).protocol, sent) << given;
    }
}

TEST(ConnectRecord, TheConnectionTypeDecidesTheMode) {
    const std::pair<int, unsigned int> cases[] = {{1, 0}, {2, 0x30}, {3, 1},
                                                  {0, 0}, {4, 0},    {-1, 0}};
    for (const auto& [type, mode] : cases) {
        const auto connType = static_cast<EcuConnect::ConnType>(type);
        EXPECT_EQ(makeConnectRecord(settingsOfAnEcu(), connType).mode, mode) << type;
    }
}

TEST(ConnectRecord, TheSecurityLibraryTravelsWithSecurityAccessOnly) {
    const EcuConnect settings = settingsOfAnEcu();
    const auto pathWith = [&](EcuConnect::ConnType type) {
        return makeConnectRecord(settings, type).securityDll;
    };
    EXPECT_EQ(pathWith(EcuConnect::SecurityAccess), "c:\\s.dll");
    EXPECT_EQ(pathWith(EcuConnect::Default), "");
    EXPECT_EQ(pathWith(EcuConnect::Alternative), "");
}

TEST(ConnectRecord, AnEmptySecurityLibraryStaysEmpty) {
    EcuConnect settings = settingsOfAnEcu();
    settings.securityDll = "";
    EXPECT_EQ(makeConnectRecord(settings, EcuConnect::SecurityAccess).securityDll, "");
}

TEST(ConnectRecord, ARelativeSecurityLibraryIsResolvedAgainstTheProgramsDirectory) {
    EcuConnect settings = settingsOfAnEcu();
    settings.securityDll = "sub\\..\\s.dll";
    EXPECT_EQ(makeConnectRecord(settings, EcuConnect::SecurityAccess).securityDll,
              common::executableDirectory() + "s.dll");
}

TEST(ConnectRecord, TheFieldsTravelInTheirOrderWithTheModeAndAZeroBetween) {
    const auto word = [](int low) {
        return std::string({static_cast<char>(low), '\0', '\0', '\0'});
    };
    std::string expected;
    for (const int value : {3, 0x11, 0, 0x12, 0x13, 0x14, 0x30, 0x15, 0x16, 0x17, 0x18, 0x19, 0, 0})
        expected += word(value);
    expected += word(8) + "c:\\s.dll" + word(0);
    const CommandKwpConnect command(
        makeConnectRecord(settingsOfAnEcu(), EcuConnect::SecurityAccess));
    std::string payload;
    command.serializePayload(payload);
    EXPECT_EQ(payload, expected);
}

class AgentConnect : public AgentTest {
protected:
    channel::CmdResponse connect(IProgressMonitor* progress = nullptr) {
        return carryOut(channel::Kind::connect,
                        std::make_shared<channel::CmdDataConnect>(settings, EcuConnect::Default),
                        progress);
    }
    void reportsAfter(std::uint32_t ms, std::int32_t id, double value) {
        clock.after(ms, [this, id, value] { qor.sendValue(id, value); });
    }

    EcuConnect settings = settingsOfAnEcu();
    FakeMonitor monitor;
};

TEST_F(AgentConnect, AnAcceptedConnectWithoutAMonitorIsAnsweredWithoutPayload) {
    const auto answer = connect();
    EXPECT_EQ(answer.result, 1u);
    EXPECT_EQ(answer.data, nullptr);
    EXPECT_THAT(sentIds(), ElementsAre(2));
    EXPECT_EQ(qor.sent().back().timeoutMs, 10000u);
}

TEST_F(AgentConnect, AConnectWithoutAReplyQueueIsCarriedOutAllTheSame) {
    post(channel::Kind::connect,
         std::make_shared<channel::CmdDataConnect>(settings, EcuConnect::Default), nullptr);
    agent.step();
    EXPECT_THAT(sentIds(), ElementsAre(2));
}

TEST_F(AgentConnect, ARefusedConnectIsAFailure) {
    qor.acknowledges = false;
    EXPECT_EQ(connect().result, 0u);
}

TEST_F(AgentConnect, ThePeriodIsReplacedBeforeTheRequestIsSentEvenIfItFails) {
    std::uint32_t periodAtSend = 0;
    qor.on<CommandKwpConnect>([&](const CommandKwpConnect&) {
        periodAtSend = channel->values.readPeriodMs();
        return false;
    });
    settings.refreshPeriodMs = 777;
    EXPECT_EQ(connect().result, 0u);
    EXPECT_EQ(periodAtSend, 777u);
    EXPECT_EQ(channel->values.readPeriodMs(), 777u);
}

TEST_F(AgentConnect, QorsOwnFigureCanBeAskedForWhileItConnects) {
    std::vector<std::int32_t> seen;
    reportsAfter(10, -11, 30);
    clock.after(15, [&] { seen.push_back(channel->progress.seen().figure); });
    reportsAfter(20, -11, 60);
    clock.after(25, [&] { seen.push_back(channel->progress.seen().figure); });
    reportsAfter(30, -12, -2);
    connect(&monitor);
    EXPECT_THAT(seen, ElementsAre(30, 60));
    EXPECT_EQ(channel->progress.seen().steps, 2u);
    reportsAfter(10, -12, -2);
    connect(&monitor);  // which tells none
    EXPECT_EQ(channel->progress.seen().figure, -1);
    EXPECT_EQ(channel->progress.seen().steps, 0u);
}

TEST_F(AgentConnect, TheMonitorHearsWhyTheBootstrapFailed) {
    monitor.cancelled = true;
    EXPECT_EQ(connect(&monitor).result, 0u);
    EXPECT_THAT(monitor.reports, ElementsAre(Pair("Bootstrap failed - cancelled", 0u)));
}

TEST_F(AgentConnect, AMonitoredConnectSucceedsOnceTheEcuIsOnline) {
    qor.on<CommandKwpConnect>([this](const CommandKwpConnect& command) {
        if (command.mode == 2) qor.sendValue(-10, 1.0);
        return true;
    });
    reportsAfter(30, -12, -1);
    EXPECT_EQ(connect(&monitor).result, 1u);
    EXPECT_TRUE(monitor.reports.empty());
}

TEST_F(AgentConnect, TheProgressOfAConnectReachesAcrossTheWrapOfTheTickCount) {
    clock.msPerRead = 0;
    for (const std::uint32_t msBefore : {17000u, 15000u, 10000u, 1u}) {
        SCOPED_TRACE(msBefore);
        clock.advanceToBeforeWrap(msBefore + 500);
        reportsAfter(500, -11, msBefore);
        reportsAfter(600, -12, -2);
        EXPECT_EQ(connect(&monitor).result, 0u);
        EXPECT_TRUE(channel->contact.isEcuOnline());
        clock.advance(16999 - 100);
        EXPECT_TRUE(channel->contact.isEcuOnline());
        clock.advance(1);
        EXPECT_FALSE(channel->contact.isEcuOnline());
        clock.advance(24 * 60 * 60 * 1000);
        EXPECT_FALSE(channel->contact.isEcuOnline());
    }
}

TEST_F(AgentConnect, EachProgressKeepsTheEcuOnlineFor17Seconds) {
    reportsAfter(500, -11, 10);
    reportsAfter(600, -12, -2);
    clock.msPerRead = 0;
    const std::uint32_t start = clock.now();
    EXPECT_EQ(connect(&monitor).result, 0u);
    EXPECT_EQ(FakeClock::tickOf(channel->contact.last()), start + 500 + 15000);
    clock.advance(start + 500 + 16999 - clock.now());
    EXPECT_TRUE(channel->contact.isEcuOnline());
    clock.advance(1);
    EXPECT_FALSE(channel->contact.isEcuOnline());
}

TEST_F(AgentConnect, WithoutProgressTheEcuStaysOfflineDuringTheConnect) {
    bool wasOnline = true;
    clock.after(500, [&] { wasOnline = channel->contact.isEcuOnline(); });
    reportsAfter(600, -12, -2);
    connect(&monitor);
    EXPECT_FALSE(wasOnline);
}

TEST_F(AgentConnect, RequestsThatComeDuringAConnectWaitForItsEnd) {
    clock.after(100, [this] {
        post(channel::Kind::pingQor, std::make_shared<channel::CmdDataPing>(5u), nullptr);
    });
    reportsAfter(200, -12, -2);
    connect(&monitor);
    EXPECT_TRUE(qor.all<CommandPing>().empty());
    agent.step();
    EXPECT_EQ(qor.all<CommandPing>().size(), 1u);
}

}  // namespace
