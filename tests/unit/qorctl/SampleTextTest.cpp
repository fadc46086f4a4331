#include "watch/SampleText.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace qorctl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(CsvText, TheHeaderNamesTheTimeAndTheParameters) {
    EXPECT_EQ("time_s,Speed,Pressure", csvHeader({"Speed", "Pressure"}));
}

TEST(CsvText, ANameThatWouldBreakTheRowStandsBetweenQuotes) {
    EXPECT_EQ(R"(time_s,"a,b","say ""x"""," blank","blank ",in side)",
              csvHeader({"a,b", "say \"x\"", " blank", "blank ", "in side"}));
    EXPECT_EQ("time_s,\"a\nb\",\"\"", csvHeader({"a\nb", ""}));
}

TEST(CsvText, ACellIsEmptyWhereThereIsNoValue) {
    EXPECT_EQ("1.250,800,", csvRow({1.25, {800, std::nullopt}}));
    EXPECT_EQ("0.000,,", csvRow({0, {std::nullopt, std::nullopt}}));
}

TEST(CsvText, ANumberHasAllItsDigitsAndNoMore) {
    EXPECT_EQ("12.346,0.1,835.2102589784537,1e+300",
              csvRow({12.3456, {0.1, 835.2102589784537, 1e300}}));
}

TEST(JsonLine, HoldsTheValuesByName) {
    EXPECT_EQ(R"({"t":1.25,"values":{"Pressure":2.5,"Speed":800.0}})",
              jsonLine({"Speed", "Pressure"}, {1.25, {800, 2.5}}));
    EXPECT_EQ(R"({"t":1.235,"values":{"Pressure":2.5}})",
              jsonLine({"Speed", "Pressure"}, {1.2349, {std::nullopt, 2.5}}));
    EXPECT_EQ(R"({"t":0.0,"values":{}})", jsonLine({"Speed"}, {0, {std::nullopt}}));
}

TEST(JsonLine, TellsWhatIsNoNumberAsText) {
    EXPECT_EQ(R"({"t":0.0,"values":{"Speed":"nan"}})", jsonLine({"Speed"}, {0, {NAN}}));
}

TEST(TextsInSamples, StandInPlaceOfAValue) {
    const Sample sample = {1.25, {std::nullopt, std::nullopt}, {}, {{1, "4.12, a"}}};
    EXPECT_EQ("1.250,,\"4.12, a\"", csvRow(sample));
    EXPECT_EQ(R"({"t":1.25,"values":{"Version":"4.12, a"}})",
              jsonLine({"Speed", "Version"}, sample));
    EXPECT_THAT(ChangeLines({"Speed", "Version"}).linesOf(sample),
                ElementsAre("1.250 Version 4.12, a"));
}

class LinesOfChange : public testing::Test {
protected:
    ChangeLines lines{{"Speed", "Pressure"}};
};

TEST_F(LinesOfChange, AValueIsToldAgainOnlyWhenItHasChanged) {
    EXPECT_THAT(lines.linesOf({0.2, {800, 2}}), ElementsAre("0.200 Speed 800", "0.200 Pressure 2"));
    EXPECT_THAT(lines.linesOf({0.4, {800, 3}}), ElementsAre("0.400 Pressure 3"));
    EXPECT_THAT(lines.linesOf({0.6, {800, 3}}), IsEmpty());
}

TEST_F(LinesOfChange, WhatDidNotArriveIsNotTold) {
    lines.linesOf({0.2, {800, 2}});
    EXPECT_THAT(lines.linesOf({0.4, {std::nullopt, 2}}), IsEmpty());
    EXPECT_THAT(lines.linesOf({0.6, {std::nullopt, 3}}), ElementsAre("0.600 Pressure 3"));
}

TEST_F(LinesOfChange, AStallIsToldOnceAndTheReturnToo) {
    const Sample stall = {0.4, {std::nullopt, std::nullopt}, {0}};
    lines.linesOf({0.2, {800, std::nullopt}});
    EXPECT_THAT(lines.linesOf(stall), ElementsAre("0.400 Speed -"));
    EXPECT_THAT(lines.linesOf(stall), IsEmpty());
    EXPECT_THAT(lines.linesOf({0.8, {800, std::nullopt}}), ElementsAre("0.800 Speed 800"));
}

}  // namespace
