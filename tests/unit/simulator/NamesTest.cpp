#include "config/Names.h"

#include <gmock/gmock.h>

namespace simulator::test {
namespace {

TEST(Names, TheNearestOneHasTheFewestMistakes) {
    const Names known = {"FuelPump", "FuelPressure", "OilPressure", "Speed"};
    EXPECT_EQ(nearestName("FuelPunp", known), "FuelPump");
    EXPECT_EQ(nearestName("OilPresure", known), "OilPressure");
    EXPECT_EQ(nearestName("sPEED", known), "Speed");
}

TEST(Names, WhatIsMostlyWrongIsNearNothing) {
    EXPECT_EQ(nearestName("Torque", {"FuelPump", "Speed"}), "");
    EXPECT_EQ(nearestName("x", {"at"}), "");
    EXPECT_EQ(nearestName("Speed", {}), "");
}

TEST(Names, AHintListsTheKnownNames) {
    EXPECT_EQ(hintFor("stal", {"stall", "exit"}), " - did you mean \"stall\"? Known: stall, exit");
    EXPECT_EQ(hintFor("foo", {"stall", "exit"}), " - known: stall, exit");
}

TEST(Names, AHintDoesNotListThousands) {
    const Names many(1000, "Parameter");
    EXPECT_THAT(hintFor("foo", many), testing::EndsWith(", Parameter and 940 more"));
}

}  // namespace
}  // namespace simulator::test
