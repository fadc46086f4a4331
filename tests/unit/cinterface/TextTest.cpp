#include "cinterface/Text.h"

#include <gmock/gmock.h>
#include <windows.h>

using cinterface::text::ansiOf;
using cinterface::text::shownUtf8Of;
using cinterface::text::utf8Of;

namespace {

const std::string umlaut = "\xC3\xBC";           // u with two dots
const std::string snowman = "\xE2\x98\x83";      // in no single-byte code page
const std::string almostQuote = "\xE2\x80\xB9";  // often replaced by a look-alike

TEST(Text, PlainTextsStayAsTheyAre) {
    EXPECT_EQ("", ansiOf(""));
    EXPECT_EQ("Engine Speed 100%", ansiOf("Engine Speed 100%"));
    EXPECT_EQ("Engine Speed 100%", utf8Of("Engine Speed 100%"));
}

TEST(Text, WhatIsNoUtf8GivesNothing) {
    for (const char* bad :
         {"\xFF", "\xC3", "a\xC3(", "\xE2\x98", "\xC0\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80"})
        EXPECT_FALSE(ansiOf(bad)) << bad;
}

TEST(Text, ACharacterThatTheCodePageLacksGivesNothing) {
    if (GetACP() == CP_UTF8) GTEST_SKIP() << "it lacks none";
    EXPECT_FALSE(ansiOf("grade " + snowman));
}

// "A" with a ring above a line below, say, must not go out as "A".
TEST(Text, NothingIsReplacedByALookAlike) {
    if (GetACP() != 1252) GTEST_SKIP() << "another code page";
    EXPECT_FALSE(ansiOf("\xC4\x80"));  // A with a line above: 1252 has only the bare one
    EXPECT_EQ("\x8B", ansiOf(almostQuote));
}

TEST(Text, GoesThereAndBack) {
    if (GetACP() != 1252) GTEST_SKIP() << "another code page";
    EXPECT_EQ("\xFC", ansiOf(umlaut));
    EXPECT_EQ(umlaut, utf8Of("\xFC"));
    EXPECT_EQ(umlaut, shownUtf8Of("\xFC"));
}

}  // namespace
