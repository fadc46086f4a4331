// Values that are young enough are not asked for again; what the time-outs mean at their ends.

#include <gmock/gmock.h>

#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr unsigned amply = 3000;
// Half of it is how long a value counts: long enough that a busy machine changes nothing.
constexpr unsigned periodMs = 3000;

class Cache : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::vector<double> values;

    bool read() { return station->getParamData("MaxEngineSpeed", values, amply); }
    /// How many reads of a value QOR has seen.
    std::size_t readsSeen() {
        std::size_t count = 0;
        for (const std::string& request : station.requests())
            if (request.find(" op=1 ") != std::string::npos) ++count;
        return count;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Cache, everyTransport(), transportName);

TEST_P(Cache, AYoungValueIsGivenWithoutARequestAndWithoutALine) {
    station.readPeriodMs = periodMs;
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(read());
    const std::size_t traced = station.trace().size();
    Sleep(50);
    values.clear();
    ASSERT_TRUE(read());
    EXPECT_THAT(values, ElementsAre(6500));
    EXPECT_EQ(1u, readsSeen());
    EXPECT_THAT(station.trace(traced), IsEmpty());
}

TEST_P(Cache, AnOldValueIsAskedForAgain) {
    station.readPeriodMs = 200;
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(read());
    Sleep(150);
    ASSERT_TRUE(read());
    EXPECT_EQ(2u, readsSeen());
}

TEST_P(Cache, WithoutARefreshPeriodEveryReadAsks) {
    ASSERT_TRUE(station.start());
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(read());
    EXPECT_EQ(3u, readsSeen());
}

TEST_P(Cache, WhatWasWrittenIsReadBackWithoutARequest) {
    station.readPeriodMs = periodMs;
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7100}, {1}, {2}, amply));
    std::vector<double> second, third;
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, second, third, amply));
    EXPECT_THAT(values, ElementsAre(7100));
    EXPECT_THAT(second, ElementsAre(1));
    EXPECT_THAT(third, ElementsAre(2));
    EXPECT_EQ(0u, readsSeen());
}

TEST_P(Cache, ARefusedWriteLeavesTheCacheAsItWas) {
    station.readPeriodMs = periodMs;
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(read());
    EXPECT_FALSE(station->setParamData("MaxEngineSpeed", {99999}, {}, {}, amply));
    ASSERT_TRUE(read());
    EXPECT_THAT(values, ElementsAre(6500));
}

TEST_P(Cache, AFailedReadTellsWhetherTheEcuIsOnline) {
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->getParamData("NoSuchParameter", values, amply));
    EXPECT_EQ("1\tQorControlFacade::getParamData() isEcuOnline=false", station.trace().back());
    ASSERT_TRUE(station.connectEcu());
    EXPECT_FALSE(station->getParamData("NoSuchParameter", values, amply));
    EXPECT_EQ("1\tQorControlFacade::getParamData() isEcuOnline=true", station.trace().back());
}

TEST_P(Cache, AConnectBringsItsOwnRefreshPeriod) {
    station.readPeriodMs = 60000;
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(read());
    ASSERT_TRUE(station.connectEcu(0));
    ASSERT_TRUE(read());
    EXPECT_EQ(2u, readsSeen());
}

TEST_P(Cache, AGroupIsAlwaysRead) {
    station.readPeriodMs = periodMs;
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(read());
    std::vector<std::vector<double>> group;
    ASSERT_TRUE(station->getParamDataAtOnce({"MaxEngineSpeed"}, group, amply));
    EXPECT_THAT(station.requests(), Contains("ReadTogether [33] [] ['MaxEngineSpeed']"));
}

TEST_P(Cache, AnEmptyGroupSucceedsWithoutARequest) {
    ASSERT_TRUE(station.start());
    const std::size_t records = station.wire().size();
    std::vector<std::vector<double>> group = {{1}};
    EXPECT_TRUE(station->getParamDataAtOnce({}, group, amply));
    EXPECT_THAT(group, IsEmpty());
    EXPECT_THAT(station.requests(records), IsEmpty());
}

TEST_P(Cache, ThePagesDifferUntilTheWorkingPageIsWritten) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7200}, {}, {}, amply));
    ASSERT_TRUE(
        station->setEcuSegment(QorControlFacade::getEdcRomSegmentName(), false, &station.monitor));
    ASSERT_TRUE(read());
    EXPECT_THAT(values, ElementsAre(6500));
    EXPECT_FALSE(station->setParamData("MaxEngineSpeed", {7300}, {}, {}, amply));
    ASSERT_TRUE(station->setEcuSegment(QorControlFacade::getEdcRamSegmentName(), false, nullptr));
    ASSERT_TRUE(read());
    EXPECT_THAT(values, ElementsAre(7200));
    EXPECT_FALSE(station->setEcuSegment("NoSuchPage", true, nullptr));
}

class Timeouts : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::vector<double> values;
};

INSTANTIATE_TEST_SUITE_P(Over, Timeouts, everyTransport(), transportName);

TEST_P(Timeouts, ZeroAndTheWordWhoseDoubleIsZeroWaitForNothing) {
    ASSERT_TRUE(station.start());
    for (const unsigned timeoutMs : {0u, 0x80000000u}) {
        // Once in a while the answer is there before the caller looks; then it counts.
        EXPECT_TRUE(eventually(5000, [&] {
            bool done = true;
            EXPECT_LE(elapsedMsOf([&] { done = station->pingQor(timeoutMs); }), 1000u);
            // The agent may still carry out what was given up; it is free again after that.
            EXPECT_TRUE(station->pingQor(15000));
            return !done;
        }));
        EXPECT_TRUE(station.traceHolds("2\tQorControlFacade::pingQor(), t: "));
    }
}

TEST_P(Timeouts, TheLargestEndsAsSoonAsTheAgentAnswers) {
    ASSERT_TRUE(station.start());
    EXPECT_LE(elapsedMsOf([&] { station->pingQor(0xFFFFFFFFu); }), 5000u);
    EXPECT_LE(elapsedMsOf([&] { station->getParamData("MaxEngineSpeed", values, 0xFFFFFFFFu); }),
              5000u);
    EXPECT_TRUE(station->pingQor(amply));
}

TEST_P(Timeouts, OneBelowTheLargestMeansTheUsualOneOfTheTransport) {
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station->pingQor(0xFFFFFFFEu));
}

TEST_P(Timeouts, ClearingTroubleCodesWaitsItsTimeOnceOnly) {
    station.script = R"({"rules":[{"match":{"id":8},"action":)" + silence(GetParam(), 900) + "}]}";
    ASSERT_TRUE(station.start());
    bool done = true;
    const unsigned elapsedMs = elapsedMsOf([&] { done = station->clearDtc(150); });
    EXPECT_FALSE(done);
    EXPECT_GE(elapsedMs, 130u);
    EXPECT_LE(elapsedMs, 390u);
}

TEST_P(Timeouts, TheAnswerOfASlowQorArrivesWithinTheCallersTime) {
    station.script = R"({"rules":[{"match":{"id":12,"operation":1},"action":{"delayMs":800}}]})";
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station->getParamData("PedalCurve", values, 4000));
}

}  // namespace
