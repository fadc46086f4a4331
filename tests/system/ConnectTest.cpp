// Connecting an ECU: the record on the wire, progress, the ways to fail, the state afterwards.

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <set>

#include "qorcontrol/ConnectProgress.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

using ConnType = QorControlFacade::EcuConnect::ConnType;

namespace {

class Connect : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    void expectFailure(const std::string& bootstrap, const std::string& message) {
        station.script = "{\"bootstrap\":" + bootstrap + "}";
        ASSERT_TRUE(station.start());
        EXPECT_FALSE(station.connectEcu());
        EXPECT_THAT(station.monitor.reports, ElementsAre(FakeMonitor::Report(message, 0)));
        EXPECT_FALSE(station->isConnecting());
    }

    /// The record that a connect with these settings sends.
    std::string sentBy(const QorControlFacade::EcuConnect& settings, ConnType type) {
        const std::size_t records = station.wire().size();
        EXPECT_TRUE(station->connect(settings, type, nullptr));
        EXPECT_TRUE(eventually(5000, [&] { return !station.requests(records).empty(); }));
        const auto requests = station.requests(records);
        return requests.empty() ? std::string() : requests.front();
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Connect, everyTransport(), transportName);

TEST_P(Connect, AConnectWithAMonitorReturnsWhenTheEcuIsOnline) {
    station.script = R"({"bootstrap":{"durationMs":600,"steps":6}})";
    ASSERT_TRUE(station.start());
    bool connected = false;
    EXPECT_GE(elapsedMsOf([&] { connected = station.connectEcu(); }), 580u);
    EXPECT_TRUE(connected);
    EXPECT_TRUE(station->isEcuOnline());
    EXPECT_THAT(station.monitor.reports, IsEmpty());
    EXPECT_EQ(0, station.monitor.strayCalls);
    EXPECT_GT(station.monitor.polls, 0);
}

TEST_P(Connect, TheConnectIsLoggedBeforeItIsSent) {
    ASSERT_TRUE(station.start());
    const std::size_t traced = station.trace().size();
    ASSERT_TRUE(station.connectEcu(250));
    EXPECT_THAT(station.trace(traced),
                ElementsAre("1\tConnecting type = 1, proto = 1, secdll = ''"));
    EXPECT_THAT(
        station.logLines(),
        ElementsAre(
            "info: CONNECT-type(1): [1 1 10400 125000 250 0xFFFFFFFF 0xFFFFFFFF 255 255 ]"));
}

TEST_P(Connect, TheStationIsConnectingOnlyWhileItWaits) {
    station.script = R"({"bootstrap":{"durationMs":800}})";
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->isConnecting());
    auto connected = std::async(std::launch::async, [&] { return station.connectEcu(); });
    EXPECT_TRUE(eventually(700, [&] { return station->isConnecting(); }));
    EXPECT_TRUE(connected.get());
    EXPECT_FALSE(station->isConnecting());
}

TEST_P(Connect, AHostCanAskHowFarItIsAndTheNextOneBeginsAnew) {
    station.script = R"({"bootstrap":{"durationMs":400,"steps":4}})";
    ASSERT_TRUE(station.start());
    EXPECT_EQ(-1, qorcontrol::connectProgress(station.facade()).figure);
    EXPECT_EQ(0u, qorcontrol::connectProgress(station.facade()).steps);
    std::set<unsigned int> steps;
    for (int connects = 0; connects < 2; ++connects) {
        auto connected = std::async(std::launch::async, [&] { return station.connectEcu(); });
        while (connected.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready)
            steps.insert(qorcontrol::connectProgress(station.facade()).steps);
        EXPECT_TRUE(connected.get());
        const qorcontrol::ConnectProgress seen = qorcontrol::connectProgress(station.facade());
        EXPECT_EQ(4u, seen.steps);
        EXPECT_EQ(100, seen.figure);
    }
    EXPECT_GT(steps.size(), 2u);
}

TEST_P(Connect, ASlowConnectLooksOnlineWhileItMakesProgress) {
    station.script = R"({"bootstrap":{"durationMs":2000,"steps":20}})";
    ASSERT_TRUE(station.start());
    auto connected = std::async(std::launch::async, [&] { return station.connectEcu(); });
    EXPECT_TRUE(eventually(1500, [&] { return station->isEcuOnline(); }));
    EXPECT_TRUE(station->isConnecting());
    EXPECT_TRUE(connected.get());
}

TEST_P(Connect, WithoutAMonitorItGoesOnInTheBackground) {
    station.script = R"({"bootstrap":{"durationMs":500}})";
    ASSERT_TRUE(station.start());
    bool connected = false;
    EXPECT_LE(elapsedMsOf([&] {
                  connected = station->connect(usualConnect(), ConnType::Default, nullptr);
              }),
              200u);
    EXPECT_TRUE(connected);
    EXPECT_FALSE(station->isConnecting());
    EXPECT_FALSE(station->isEcuOnline());
    EXPECT_TRUE(eventually(5000, [&] { return station->isEcuOnline(); }));
    EXPECT_FALSE(station->isConnecting());
}

TEST_P(Connect, AnEcuThatGoesOfflineIsOfflineTwoSecondsLater) {
    station.script = R"({"at":[{"since":"connect","afterMs":1500,"online":false}]})";
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->connect(usualConnect(), ConnType::Default, nullptr));
    ASSERT_TRUE(eventually(5000, [&] { return station->isEcuOnline(); }));
    EXPECT_TRUE(eventually(8000, [&] { return !station->isEcuOnline(); }));
}

TEST_P(Connect, AFailureThatQorReportsReachesTheMonitor) {
    expectFailure(R"({"result":-2,"durationMs":200})", "Bootstrap failed - QOR reported");
}

TEST_P(Connect, AResultThatNobodyKnowsIsAFailure) {
    expectFailure(R"({"result":7,"durationMs":200})", "Bootstrap failed - unknown code");
}

TEST_P(Connect, AQorThatNeverTellsAResultIsLeftByCancelling) {
    station.script = R"({"bootstrap":{"result":null,"durationMs":100}})";
    ASSERT_TRUE(station.start());
    auto connected = std::async(std::launch::async, [&] { return station.connectEcu(); });
    EXPECT_EQ(std::future_status::timeout, connected.wait_for(std::chrono::milliseconds(1000)));
    station.monitor.cancelled = true;
    ASSERT_EQ(std::future_status::ready, connected.wait_for(std::chrono::seconds(5)));
    EXPECT_FALSE(connected.get());
    EXPECT_THAT(station.monitor.reports,
                ElementsAre(FakeMonitor::Report("Bootstrap failed - cancelled", 0)));
}

TEST_P(Connect, AMonitorThatHasCancelledBeforeEndsTheConnectAtOnce) {
    station.script = R"({"bootstrap":{"durationMs":3000}})";
    ASSERT_TRUE(station.start());
    station.monitor.cancelled = true;
    bool connected = true;
    EXPECT_LE(elapsedMsOf([&] { connected = station.connectEcu(); }), 2000u);
    EXPECT_FALSE(connected);
    EXPECT_THAT(station.monitor.reports,
                ElementsAre(FakeMonitor::Report("Bootstrap failed - cancelled", 0)));
}

TEST_P(Connect, ARefusedConnectFailsWithoutAReport) {
    station.script = R"({"rules":[{"match":{"id":2,"operation":1},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->connect(usualConnect(), ConnType::Alternative, &station.monitor));
    EXPECT_THAT(station.monitor.reports, IsEmpty());
    EXPECT_FALSE(station->isConnecting());
}

TEST_P(Connect, AfterAFailedConnectTheNextOneCanSucceed) {
    station.script = R"({"rules":[{"match":{"id":2,"operation":1},
        "action":{"bootstrap":{"result":-2,"durationMs":100}}}]})";
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->connect(usualConnect(), ConnType::Alternative, &station.monitor));
    EXPECT_TRUE(station.connectEcu());
}

TEST_P(Connect, AllSettingsTravelInTheOrderOfTheWire) {
    ASSERT_TRUE(station.start());
    const QorControlFacade::EcuConnect settings = {
        3, 7, false, 9600, 500000, 150, 0x7E0, 0x7E8, 0x12, 0x34, 777, false, "ignored", false};
    EXPECT_EQ("KwpConnect protocol=3 7 0 9600 500000 period=150 mode=1 7E0 7E8 18 52 777 0 0 '' 0",
              sentBy(settings, ConnType::Alternative));
}

TEST_P(Connect, AProtocolThatQorDoesNotKnowIsSentAsTheFirst) {
    ASSERT_TRUE(station.start());
    for (const unsigned protocol : {0u, 7u, 0xFFFFFFFFu}) {
        auto settings = usualConnect();
        settings.protocol = protocol;
        EXPECT_THAT(sentBy(settings, ConnType::Default), HasSubstr("KwpConnect protocol=1 "));
    }
}

TEST_P(Connect, TheSecurityLibraryTravelsResolvedAndForSecurityAccessAlone) {
    ASSERT_TRUE(station.start());
    auto settings = usualConnect();
    settings.securityDll = "keys\\seed.dll";
    EXPECT_THAT(sentBy(settings, ConnType::Default), EndsWith(" '' 1"));
    const std::string secured = sentBy(settings, ConnType::SecurityAccess);
    EXPECT_THAT(secured, HasSubstr(" mode=48 "));
    EXPECT_THAT(secured, HasSubstr(":\\"));
    EXPECT_THAT(secured, EndsWith("\\keys\\seed.dll' 1"));
    EXPECT_THAT(station.logLines(), Contains(EndsWith(" 255 255 keys\\seed.dll]")));
    settings.securityDll.clear();
    EXPECT_THAT(sentBy(settings, ConnType::SecurityAccess), EndsWith(" '' 1"));
}

TEST_P(Connect, AnExchangeWithTheEcuBeforeAnyConnectFailsWithoutARequest) {
    ASSERT_TRUE(station.start());
    const std::size_t records = station.wire().size();
    QorControlFacade::KwpCommand kwp = {0x3E, "", 0};
    EXPECT_FALSE(station->sendKwpCommand(kwp, 1000));
    EXPECT_THAT(station.requests(records), IsEmpty());
    EXPECT_THAT(station.logLines(),
                ElementsAre("info: KWP-send(0x3E): []", "error: FAILED KWP-send(0x3E), t: # ms"));
}

}  // namespace
