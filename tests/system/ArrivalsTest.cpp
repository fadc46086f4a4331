// qorcontrol::Arrivals: each value that QOR sends once, with its time and with what was missed.

#include "qorcontrol/Arrivals.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <sstream>

#include "guide/Arrivals.h"
#include "qorcontrol/Outcome.h"
#include "Station.h"
#include "Waiting.h"

using qorcontrol::Arrival;
using qorcontrol::Cause;
using testing::Contains;

namespace {

constexpr unsigned amplyMs = 10000;
constexpr unsigned periodMs = 50;
constexpr std::uint32_t engineSpeed = 4;  // indices in the model
constexpr std::uint32_t oilPressure = 13;

Cause lastCause() {
    return qorcontrol::lastOutcome().cause;
}

class ArrivalsOfQor : public testing::TestWithParam<Transport> {
protected:
    using Arrivals = qorcontrol::Arrivals;

    const std::vector<std::string> names = {"EngineSpeed", "OilPressure"};
    Station station{GetParam()};
    std::unique_ptr<Arrivals> arrivals;
    std::vector<Arrival> all;  // that were read

    bool startConnected() { return station.start() && station.connectEcu(periodMs); }
    /// From some time after the connect on QOR sends nothing any more.
    void stallAfter(unsigned ms, const std::string& name = "*") {
        station.script = R"({"at":[{"since":"connect","afterMs":)" + std::to_string(ms) +
                         R"(,"stall":")" + name + R"("}]})";
    }
    void begin(unsigned slots) {
        arrivals = std::make_unique<Arrivals>(station.facade(), names, slots);
    }
    bool read(unsigned waitMs) {
        std::vector<Arrival> values;
        const bool isThere = arrivals->read(values, waitMs);
        EXPECT_EQ(isThere, !values.empty());
        all.insert(all.end(), values.begin(), values.end());
        return isThere;
    }
    /// Waits until QOR, which had begun, has sent the last.
    bool awaitStall() const {
        return eventually(amplyMs, [&] {
            const unsigned before = sent(engineSpeed);
            Sleep(300);
            return before != 0 && before == sent(engineSpeed);
        });
    }
    unsigned sent(std::uint32_t index) const { return valuesSentIn(station.wire(), index); }
    unsigned got(unsigned name) const {
        return static_cast<unsigned>(std::count_if(
            all.begin(), all.end(), [&](const Arrival& each) { return each.name == name; }));
    }
    unsigned missed(unsigned name) const {
        unsigned latest = 0;
        for (const Arrival& each : all)
            if (each.name == name) latest = each.missed;
        return latest;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, ArrivalsOfQor, everyTransport(), transportName);

TEST_P(ArrivalsOfQor, ComeOnceEachInOrderWithTheirTimesAndAreAllThatQorSent) {
    stallAfter(2000);
    ASSERT_TRUE(startConnected());
    const auto beginMs = Arrivals::nowMs();
    begin(10000);
    ASSERT_TRUE(awaitStall());
    while (read(500)) continue;
    EXPECT_EQ(Cause::notReady, lastCause());
    EXPECT_GT(got(0), 10u);
    EXPECT_EQ(sent(engineSpeed), got(0));
    EXPECT_EQ(sent(oilPressure), got(1));
    EXPECT_EQ(0u, missed(0) + missed(1));
    auto lastMs = beginMs;
    for (const Arrival& each : all) {
        EXPECT_GE(each.timeMs, lastMs);
        lastMs = each.timeMs;
    }
    EXPECT_LE(lastMs + 700, Arrivals::nowMs());  // not the time of the read
    EXPECT_GE(lastMs, all.front().timeMs + 500);
}

TEST_P(ArrivalsOfQor, OfAParameterThatStallsBringNothingWhileTheOtherGoesOn) {
    stallAfter(1200, "EngineSpeed");
    ASSERT_TRUE(startConnected());
    begin(10000);
    ASSERT_TRUE(awaitStall());
    while (read(0)) continue;
    all.clear();
    const auto endMs = GetTickCount64() + 600;
    while (GetTickCount64() < endMs) read(50);
    EXPECT_EQ(0u, got(0));
    EXPECT_GT(got(1), 3u);
}

TEST_P(ArrivalsOfQor, ThatFindNoRoomAreCountedForTheirName) {
    stallAfter(1500);
    ASSERT_TRUE(startConnected());
    begin(6);
    ASSERT_TRUE(awaitStall());
    ASSERT_TRUE(read(1000));
    EXPECT_FALSE(read(0));
    EXPECT_EQ(6u, all.size());
    EXPECT_GT(missed(0), 10u);
    EXPECT_EQ(sent(engineSpeed), got(0) + missed(0));
    EXPECT_EQ(sent(oilPressure), got(1) + missed(1));
}

TEST_P(ArrivalsOfQor, OfNamesThatQorDoesNotKnowDoNotComeAndTheReaderIsTold) {
    ASSERT_TRUE(startConnected());
    Arrivals unknown(station.facade(), {"EngineSpeed", "NoSuchParameter"}, 10);
    std::vector<Arrival> values;
    EXPECT_TRUE(eventually(
        amplyMs, [&] { return !unknown.read(values, 100) && lastCause() == Cause::unknownName; }));
}

TEST_P(ArrivalsOfQor, OfNamesThatQorRefusesDoNotComeAndTheReaderIsToldWhy) {
    station.script = R"({"rules":[{"match":{"id":5},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(startConnected());
    Arrivals refused(station.facade(), {"EngineSpeed"}, 10);
    std::vector<Arrival> values;
    EXPECT_TRUE(eventually(amplyMs, [&] {
        return !refused.read(values, 100) && lastCause() == Cause::notReady &&
               qorcontrol::lastOutcome().sentence.find("QOR refused") != std::string::npos;
    })) << qorcontrol::lastOutcome().sentence;
}

TEST_P(ArrivalsOfQor, CanBeReadBehindTheStopAndThenThereAreNoMore) {
    ASSERT_TRUE(startConnected());
    begin(10000);
    ASSERT_TRUE(eventually(amplyMs, [&] { return read(100); }));
    Sleep(300);
    EXPECT_TRUE(arrivals->stop());
    EXPECT_EQ("SetParamList", station.requests().back());
    EXPECT_TRUE(read(0));
    const unsigned took = elapsedMsOf([&] { EXPECT_FALSE(read(amplyMs)); });
    EXPECT_LT(took, 2000u);
    EXPECT_EQ(Cause::wrongOrder, lastCause());
    // What comes while the stop is on its way to QOR is not collected any more.
    EXPECT_THAT(sent(engineSpeed), testing::AllOf(testing::Ge(got(0)), testing::Le(got(0) + 2)));
}

TEST_P(ArrivalsOfQor, EndWithoutAStopIsToldToQor) {
    ASSERT_TRUE(startConnected());
    begin(10);
    ASSERT_TRUE(eventually(amplyMs, [&] { return read(100); }));
    arrivals.reset();
    ASSERT_TRUE(station->pingQor(amplyMs));
    EXPECT_THAT(station.requests(), Contains("SetParamList"));
}

TEST_P(ArrivalsOfQor, MayOutliveTheFacadeAndThenAreWhatWasThere) {
    ASSERT_TRUE(startConnected());
    begin(10000);
    ASSERT_TRUE(eventually(amplyMs, [&] { return read(100); }));
    Sleep(300);
    station.close();
    EXPECT_TRUE(read(0));
    const unsigned took = elapsedMsOf([&] { EXPECT_FALSE(read(amplyMs)); });
    EXPECT_LT(took, 2000u);
    EXPECT_EQ(Cause::agentEnded, lastCause());
    arrivals->stop();
    arrivals.reset();
}

TEST_P(ArrivalsOfQor, AreRecordedByTheExampleOfTheGuide) {
    ASSERT_TRUE(startConnected());
    std::ostringstream file;
    EXPECT_EQ(0u, guide::record(station.facade(), names, 1500, file));
    EXPECT_THAT(file.str(), testing::ContainsRegex("^\\d+;EngineSpeed;\\d+"));
    EXPECT_THAT(file.str(), testing::ContainsRegex("\n\\d+;OilPressure;\\d+"));
}

}  // namespace
