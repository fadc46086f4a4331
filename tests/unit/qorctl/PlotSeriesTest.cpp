#include "watch/plot/PlotSeries.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace qorctl;
using nlohmann::json;

namespace {

TEST(PlotSeries, HoldsTheSamplesByCurveWithNullsForGaps) {
    PlotSeries series;
    series.add({"Speed", "1/min", "Engine speed"});
    series.add({"Fan", "", ""});
    EXPECT_TRUE(series.isEmpty());
    series.take({0.2004, {800, std::nullopt}});
    series.take({0.4, {std::nullopt, 1}});
    EXPECT_FALSE(series.isEmpty());
    EXPECT_EQ(json::parse(R"({"times":[0.2,0.4],"curves":[
                  {"name":"Speed","unit":"1/min","meaning":"Engine speed","values":[800,null]},
                  {"name":"Fan","unit":"","meaning":"","values":[null,1]}]})"),
              json::parse(series.asJson().dump()));
}

TEST(PlotSeries, WhatIsNoNumberIsAGap) {
    PlotSeries series;
    series.add({"Speed", "", ""});
    series.take({1, {INFINITY}});
    series.take({2, {NAN}});
    EXPECT_EQ(R"([null,null])", series.asJson()["curves"][0]["values"].dump());
}

class FullSeries : public testing::Test {
protected:
    PlotSeries series{2 * 8};  // one curve and the time: eight rows

    FullSeries() { series.add({"Speed", "", ""}); }
    void takeUpTo(int last, int gapAt = -1) {
        for (int i = 0; i <= last; ++i)
            series.take({i * 1.0, {i == gapAt ? std::nullopt : std::optional<double>(i * 10)}});
    }
    std::string times() const { return series.asJson()["times"].dump(); }
    std::string values() const { return series.asJson()["curves"][0]["values"].dump(); }
};

TEST_F(FullSeries, KeepsEverySecondSampleFromThenOn) {
    takeUpTo(6);
    EXPECT_EQ(1u, series.stride());
    series.take({7.0, {70}});
    EXPECT_EQ(2u, series.stride());
    EXPECT_EQ("[0.0,2.0,4.0,6.0]", times());
    for (int i = 8; i <= 11; ++i) series.take({i * 1.0, {i * 10}});
    EXPECT_EQ("[0.0,2.0,4.0,6.0,8.0,10.0]", times());
    EXPECT_EQ("[0.0,20.0,40.0,60.0,80.0,100.0]", values());
}

TEST_F(FullSeries, StaysBoundedForAnyLength) {
    takeUpTo(100000);
    EXPECT_LT(series.rows(), 8u);
    EXPECT_EQ(0, series.asJson()["times"][0]);
}

TEST_F(FullSeries, AGapStaysAGapWhenItIsInASampleThatGoes) {
    takeUpTo(7, 3);
    EXPECT_EQ("[0.0,null,40.0,60.0]", values());
    series.take({8.0, {80}});
    series.take({9.0, {std::nullopt}});
    EXPECT_EQ("[0.0,null,40.0,60.0,null]", values());
}

TEST(PlotSeries, WithAnOddNumberOfRowsTheLastOneStaysAndTakesTheNextGap) {
    PlotSeries series(2 * 7);
    series.add({"Speed", "", ""});
    for (int i = 0; i <= 6; ++i) series.take({i * 1.0, {i * 10}});
    EXPECT_EQ("[0.0,2.0,4.0,6.0]", series.asJson()["times"].dump());
    series.take({7.0, {std::nullopt}});
    series.take({8.0, {80}});
    EXPECT_EQ("[0.0,2.0,4.0,6.0,8.0]", series.asJson()["times"].dump());
    EXPECT_EQ("[0.0,20.0,40.0,null,80.0]", series.asJson()["curves"][0]["values"].dump());
}

}  // namespace
