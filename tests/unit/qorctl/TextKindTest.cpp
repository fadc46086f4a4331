#include "TextKind.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace qorctl;

namespace {

const std::vector<double> version = {'4', '.', '1', '2', 0, 0};

TEST(TextKind, CharacterCodesWithoutAUnitAreAText) {
    EXPECT_TRUE(couldBeText(version, ""));
    EXPECT_TRUE(looksLikeText(version, ""));
}

TEST(TextKind, WhatHasAUnitIsNone) {
    EXPECT_FALSE(couldBeText(version, "bar"));
}

TEST(TextKind, ASingleNumberIsNone) {
    EXPECT_FALSE(couldBeText({65}, ""));
}

TEST(TextKind, OtherNumbersThanCodesAreNone) {
    for (const double other : {-1.0, 31.0, 65.5, 127.0, 256.0, double{NAN}})
        EXPECT_FALSE(couldBeText({65, other}, "")) << other;
}

TEST(TextKind, AnEmptyOneCouldBeATextAndDoesNotLookLikeIt) {
    for (const auto& empty : {std::vector<double>{}, {0, 0, 0}, {32, 32}, {255, 255}}) {
        EXPECT_TRUE(couldBeText(empty, ""));
        EXPECT_FALSE(looksLikeText(empty, ""));
    }
}

TEST(TextKind, RowsOfNumbersAreNone) {
    EXPECT_FALSE(looksLikeText({100, 100, 100}, ""));  // factors in per cent
    EXPECT_FALSE(looksLikeText({40, 60, 33, 35}, ""));
    EXPECT_TRUE(looksLikeText({'A', 0}, ""));
    EXPECT_TRUE(looksLikeText({'W', '-', '1'}, ""));
}

TEST(TextKind, PaddingIsNotShown) {
    EXPECT_EQ("4.12", withoutPadding(std::string("4.12\0\0", 6)));
    EXPECT_EQ("4.12", withoutPadding("4.12 \xFF\xFF"));
    EXPECT_EQ("", withoutPadding("   "));
}

}  // namespace
