// What the library waits for longest: an ECU that never comes online, a QOR that never comes up.

#include <gmock/gmock.h>

#include <future>

#include "Station.h"
#include "Waiting.h"

using testing::ElementsAre;

namespace {

class Patience : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Over, Patience, everyTransport(), transportName);

TEST_P(Patience, AnEcuThatNeverComesOnlineIsGivenUpAfterFifteenSeconds) {
    station.script = R"({"bootstrap":{"durationMs":100,"online":false}})";
    ASSERT_TRUE(station.start());
    bool connected = true;
    const unsigned elapsedMs = elapsedMsOf([&] { connected = station.connectEcu(); });
    EXPECT_FALSE(connected);
    EXPECT_GE(elapsedMs, 14950u);
    EXPECT_LE(elapsedMs, 18000u);
    EXPECT_THAT(station.monitor.reports,
                ElementsAre(FakeMonitor::Report("Bootstrap failed - timeout", 0)));
}

TEST_P(Patience, AnEcuThatIsNotYetOnlineCanStillBeCancelled) {
    station.script = R"({"bootstrap":{"durationMs":100,"online":false}})";
    ASSERT_TRUE(station.start());
    auto connected = std::async(std::launch::async, [&] { return station.connectEcu(); });
    EXPECT_EQ(std::future_status::timeout, connected.wait_for(std::chrono::milliseconds(1500)));
    station.monitor.cancelled = true;
    EXPECT_FALSE(connected.get());
    EXPECT_THAT(station.monitor.reports,
                ElementsAre(FakeMonitor::Report("Bootstrap failed - cancelled", 0)));
}

TEST_P(Patience, AQorThatDiesAtItsStartIsGivenUpAfterTenSeconds) {
    station.script = "this is no script";
    bool givenUp = false;
    const unsigned elapsedMs = elapsedMsOf([&] {
        station.open();
        givenUp = eventually(
            30000, [&] { return station.traceHolds("Fail to launch QOR external operating."); });
    });
    EXPECT_TRUE(givenUp);
    EXPECT_GE(elapsedMs, 9950u);
    // Eleven seconds at most, and what a busy machine adds.
    EXPECT_LE(elapsedMs, 14000u);
    EXPECT_FALSE(station->pingQor(1000));
}

}  // namespace
