#include "HexText.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace qorctl;

TEST(HexText, BytesMayStandInOneWordOrInMany) {
    const std::string expected("\x00\x0A\xFF", 3);
    EXPECT_EQ(expected, bytesOf({"00", "0A", "FF"}));
    EXPECT_EQ(expected, bytesOf({"000aff"}));
    EXPECT_EQ(expected, bytesOf({"00 0A", " ff "}));
    EXPECT_EQ("", bytesOf({}));
}

TEST(HexText, WhatIsNoByteIsToldWithItsWord) {
    for (const char* const word : {"0", "012", "0G", "0x1", "-1", "0 A", "\xE4\xF6"}) {
        EXPECT_THROW(bytesOf({"00", word}), std::invalid_argument) << word;
        EXPECT_NE("", whyNoBytes(word)) << word;
    }
    EXPECT_EQ("0G is no row of bytes: write 0A 1F or 0A1F, for instance", whyNoBytes("0G"));
    EXPECT_EQ("", whyNoBytes("0A"));
}

TEST(HexText, EveryByteComesBackAsTwoDigits) {
    EXPECT_EQ("00 0A FF", hexOf(std::string("\x00\x0A\xFF", 3)));
    EXPECT_EQ("", hexOf(""));
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    EXPECT_EQ(all, bytesOf({hexOf(all)}));
}
