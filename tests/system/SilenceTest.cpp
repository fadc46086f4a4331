// Operations whose time is the library's own, against a QOR that says nothing.

#include <gmock/gmock.h>

#include <future>

#include "Station.h"
#include "Waiting.h"

using testing::IsEmpty;

namespace {

class Silence : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    bool startSilentOn(const std::string& match, unsigned spanMs) {
        station.script = R"({"rules":[{"match":)" + match + R"(,"action":)" +
                         silence(GetParam(), spanMs) + "}]}";
        return station.start();
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Silence, everyTransport(), transportName);

TEST_P(Silence, APageIsWaitedForTenSecondsAndADescriptionMeanwhileForThree) {
    ASSERT_TRUE(startSilentOn(R"({"id":14})", 12000));
    unsigned segmentMs = 0;
    auto selected = std::async(std::launch::async, [&] {
        bool done = true;
        segmentMs =
            elapsedMsOf([&] { done = station->setEcuSegment("WorkingPage", true, nullptr); });
        return done;
    });
    Sleep(300);
    wex::ParamDescription description = {};
    description.text1 = "as it was";
    bool described = true;
    const unsigned elapsedMs =
        elapsedMsOf([&] { described = station->getParamDescription("EngineSpeed", description); });
    EXPECT_FALSE(described);
    EXPECT_GE(elapsedMs, 2970u);
    EXPECT_LE(elapsedMs, 4000u);
    EXPECT_EQ("EngineSpeed", description.name);
    EXPECT_EQ("as it was", description.text1);
    EXPECT_FALSE(selected.get());
    EXPECT_GE(segmentMs, 9950u);
    EXPECT_LE(segmentMs, 13000u);
}

TEST_P(Silence, AConnectThatIsNotTakenFailsAfterTenSecondsWithoutAReport) {
    ASSERT_TRUE(startSilentOn(R"({"id":2,"operation":1})", 12000));
    bool connected = true;
    const unsigned elapsedMs = elapsedMsOf([&] {
        connected = station->connect(usualConnect(), QorControlFacade::EcuConnect::Alternative,
                                     &station.monitor);
    });
    EXPECT_FALSE(connected);
    EXPECT_GE(elapsedMs, 9950u);
    EXPECT_LE(elapsedMs, 13000u);
    EXPECT_THAT(station.monitor.reports, IsEmpty());
}

}  // namespace
