// What the host guide says of failures: the time of one tells its cause.

#include <gmock/gmock.h>

#include "Station.h"
#include "Waiting.h"

namespace {

class GuideTimes : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    wex::ParamDescription description = {};

    bool startWith(const std::string& action) {
        station.script =
            R"({"rules":[{"match":{"id":7,"name":"KnockRetard"},"action":)" + action + "}]}";
        return station.start() && station->getParamDescription("KnockRetard", description);
    }
    unsigned failingReadMs(unsigned timeoutMs) {
        std::vector<double> values;
        return elapsedMsOf(
            [&] { EXPECT_FALSE(station->getParamData("KnockRetard", values, timeoutMs)); });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, GuideTimes, everyTransport(), transportName);

TEST_P(GuideTimes, ARefusalComesAtOnce) {
    ASSERT_TRUE(startWith(R"({"answer":"refuse"})"));
    EXPECT_LE(failingReadMs(2000), 500u);
}

TEST_P(GuideTimes, WithoutAQorItComesAtOnceOrWithTheAttemptsToConnect) {
    // QOR would be started by somebody else, who has not done so.
    station.settings.executable.clear();
    station.open();
    for (int i = 0; i < 3; ++i)
        EXPECT_LE(failingReadMs(8000), GetParam() == Transport::tcp ? 5000u : 500u);
}

TEST_P(GuideTimes, SilenceTakesTheTimeOutOnce) {
    ASSERT_TRUE(startWith(silence(GetParam(), 3000)));
    const unsigned elapsedMs = failingReadMs(800);
    EXPECT_GE(elapsedMs, 780u);
    EXPECT_LE(elapsedMs, 1300u);
}

TEST_P(GuideTimes, AnAcknowledgementWithoutAnAnswerTakesTheTimeOutOnceToo) {
    ASSERT_TRUE(startWith(R"({"answer":"ackOnly"})"));
    const unsigned elapsedMs = failingReadMs(800);
    EXPECT_GE(elapsedMs, 780u);
    EXPECT_LE(elapsedMs, 1300u);
}

TEST_P(GuideTimes, AnAgentThatIsBusyTakesItTwice) {
    // The agent waits for QOR to take a connect; the read waits for the agent.
    station.script = R"({"rules":[{"match":{"id":2,"operation":0},"action":{"hangMs":2500}}]})";
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr));
    const unsigned elapsedMs = failingReadMs(500);
    EXPECT_GE(elapsedMs, 980u);
    EXPECT_LE(elapsedMs, 1500u);
}

}  // namespace
