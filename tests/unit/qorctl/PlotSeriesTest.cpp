#include "watch/plot/PlotSeries.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace qorctl;
using nlohmann::json;

namespace {

TEST(PlotSeries, HoldsEachValueAtItsTimeWithNullsForGaps) {
    PlotSeries series;
    series.add({"Speed", "1/min", "Engine speed"});
    series.add({"Fan", "", ""});
    EXPECT_TRUE(series.isEmpty());
    series.take({0.2004, {800, std::nullopt}});
    series.take({0.4, {std::nullopt, 1}});
    series.take({0.8, {std::nullopt, std::nullopt}, {0}});
    series.take({0.9, {801, 2}});
    EXPECT_FALSE(series.isEmpty());
    EXPECT_EQ(json::parse(R"({"curves":[
                  {"name":"Speed","unit":"1/min","meaning":"Engine speed",
                   "times":[0.2,0.8,0.9],"values":[800,null,801]},
                  {"name":"Fan","unit":"","meaning":"","times":[0.4,0.9],"values":[1,2]}]})"),
              json::parse(series.asJson().dump()));
    EXPECT_EQ(4u, series.values());
}

TEST(PlotSeries, ATextHasNoCurve) {
    PlotSeries series;
    series.add({"Version", "", "", false});
    series.add({"Fan", "", ""});
    series.take({1, {std::nullopt, 2}, {}, {{0, "4.12"}}});
    ASSERT_EQ(1u, series.asJson()["curves"].size());
    EXPECT_EQ("Fan", series.asJson()["curves"][0]["name"]);
    EXPECT_EQ(1u, series.values());
}

TEST(PlotSeries, WhatIsNoNumberIsAGap) {
    PlotSeries series;
    series.add({"Speed", "", ""});
    series.take({1, {INFINITY}});
    series.take({2, {NAN}});
    EXPECT_EQ(R"([null,null])", series.asJson()["curves"][0]["values"].dump());
}

/// A value at its second, or a stall.
Sample sampleOf(int second, bool isStall = false) {
    if (isStall) return {second * 1.0, {std::nullopt}, {0}};
    return {second * 1.0, {second * 10}};
}

class FullSeries : public testing::Test {
protected:
    PlotSeries series{2 * 8};  // eight points

    FullSeries() { series.add({"Speed", "", ""}); }
    void takeUpTo(int last, int stallAt = -1) {
        for (int i = 0; i <= last; ++i) series.take(sampleOf(i, i == stallAt));
    }
    std::string times() const { return series.asJson()["curves"][0]["times"].dump(); }
    std::string values() const { return series.asJson()["curves"][0]["values"].dump(); }
};

TEST_F(FullSeries, KeepsEverySecondValueFromThenOn) {
    takeUpTo(6);
    EXPECT_EQ(1u, series.stride());
    series.take(sampleOf(7));
    EXPECT_EQ(2u, series.stride());
    EXPECT_EQ("[0.0,2.0,4.0,6.0]", times());
    for (int i = 8; i <= 11; ++i) series.take(sampleOf(i));
    EXPECT_EQ("[0.0,2.0,4.0,6.0,8.0,10.0]", times());
    EXPECT_EQ("[0.0,20.0,40.0,60.0,80.0,100.0]", values());
    EXPECT_EQ(12u, series.values());
}

TEST_F(FullSeries, StaysBoundedForAnyLength) {
    takeUpTo(100000);
    EXPECT_LT(series.points(), 8u);
    EXPECT_EQ(0, series.asJson()["curves"][0]["times"][0]);
}

TEST_F(FullSeries, AGapStaysAGapWhenItIsAPointThatGoes) {
    takeUpTo(7, 3);
    EXPECT_EQ("[0.0,null,40.0,60.0]", values());
    series.take(sampleOf(8));
    series.take(sampleOf(9, true));
    EXPECT_EQ("[0.0,null,40.0,60.0,null]", values());
}

TEST(PlotSeries, WithAnOddNumberOfPointsTheLastOneStaysAndTakesTheNextGap) {
    PlotSeries series(2 * 7);
    series.add({"Speed", "", ""});
    for (int i = 0; i <= 6; ++i) series.take(sampleOf(i));
    EXPECT_EQ("[0.0,2.0,4.0,6.0]", series.asJson()["curves"][0]["times"].dump());
    series.take(sampleOf(7, true));
    series.take(sampleOf(8));
    EXPECT_EQ("[0.0,2.0,4.0,6.0,8.0]", series.asJson()["curves"][0]["times"].dump());
    EXPECT_EQ("[0.0,20.0,40.0,null,80.0]", series.asJson()["curves"][0]["values"].dump());
}

TEST(PlotSeries, ACurveThatBringsLittleIsThinnedOutLikeTheOthers) {
    PlotSeries series(2 * 8);
    series.add({"Speed", "", ""});
    series.add({"Fan", "", ""});
    for (int i = 0; i <= 6; ++i)
        series.take({i * 1.0, {i * 10, i % 4 == 0 ? std::optional<double>(i) : std::nullopt}});
    EXPECT_EQ("[0.0,2.0,4.0,6.0]", series.asJson()["curves"][0]["times"].dump());
    EXPECT_EQ("[0.0]", series.asJson()["curves"][1]["times"].dump());
    series.take({8.0, {std::nullopt, 8}});
    EXPECT_EQ("[0.0,8.0]", series.asJson()["curves"][1]["times"].dump());
}

}  // namespace
