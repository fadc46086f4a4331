// Reading single values: what is not there whole is left alone, and the position stays.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "FieldDump.h"
#include "HexBytes.h"
#include "protocol/Records.h"
#include "protocol/Wire.h"

using testing_support::bytesOf;
using testing_support::wordOf;

namespace {

template <class T>
T valueFrom(const std::string& hex, T initial) {
    const std::string payload = bytesOf(hex);
    wire::Reader(payload).get(initial);
    return initial;
}

}  // namespace

TEST(WireReader, ABooleanPayloadWordOf2ReadsAsFalse) {
    EXPECT_FALSE(valueFrom("02 00 00 00", true));
}

TEST(WireReader, OnlyTheWord1IsTrue) {
    EXPECT_TRUE(valueFrom("01 00 00 00", false));
    EXPECT_FALSE(valueFrom("00 00 00 00", true));
    EXPECT_FALSE(valueFrom("FF FF FF FF", true));
    EXPECT_FALSE(valueFrom("01 01 00 00", true));
    EXPECT_FALSE(valueFrom("00 00 00 01", true));
}

TEST(WireReader, AByteTakesTheLowByteOfItsWord) {
    EXPECT_EQ(valueFrom<std::uint8_t>("34 12 00 00", 0xFF), 0x34);
}

TEST(WireReader, AWordCutAtAnyByteLeavesTheDestinationUnchanged) {
    for (const char* hex : {"", "01", "01 02", "01 02 03"}) {
        EXPECT_EQ(valueFrom<std::uint32_t>(hex, 77), 77u);
        EXPECT_EQ(valueFrom<std::int32_t>(hex, -77), -77);
        EXPECT_EQ(valueFrom<std::uint8_t>(hex, 7), 7);
        EXPECT_TRUE(valueFrom(hex, true));
        EXPECT_FALSE(valueFrom(hex, false));
    }
}

TEST(WireReader, ADoubleCutAtAnyByteLeavesTheDestinationUnchanged) {
    for (std::size_t bytes = 0; bytes < 8; ++bytes) {
        const std::string payload(bytes, '\x55');
        double value = -2.5;
        wire::Reader(payload).get(value);
        EXPECT_EQ(value, -2.5) << bytes;
    }
}

TEST(WireReader, AStringWhoseBytesAreCutLeavesDestinationAndPosition) {
    const std::string payload = bytesOf("05 00 00 00 'abcd'");
    wire::Reader reader(payload);
    std::string text = "kept";
    reader.get(text);
    EXPECT_EQ(text, "kept");
    std::uint32_t next = 0;
    reader.get(next);
    EXPECT_EQ(next, 5u) << "the next value is read from the string's length word";
}

TEST(WireReader, AStringLengthNearTheTopOfItsRangeDoesNotWrapAround) {
    for (const char* hex : {"FF FF FF FF 'abcd'", "FC FF FF FF 'abcd'", "00 00 00 80 'abcd'"}) {
        EXPECT_EQ(valueFrom<std::string>(hex, "kept"), "kept");
    }
}

TEST(WireReader, AnEmptyStringReplacesTheOldText) {
    EXPECT_EQ(valueFrom<std::string>("00 00 00 00", "old"), "");
}

TEST(WireReader, AStringKeepsZeroBytes) {
    EXPECT_EQ(valueFrom<std::string>("03 00 00 00 00 41 00", ""), std::string("\0A\0", 3));
}

TEST(WireReader, ASignedWordKeepsAllItsBits) {
    EXPECT_EQ(valueFrom<std::int32_t>("00 00 00 80", 0), INT32_MIN);
    EXPECT_EQ(valueFrom<std::int32_t>("F4 FF FF FF", 0), -12);
}

TEST(WireReader, ACountBeyondTheDataGivesDefaultElementsAfterTheDataRunOut) {
    const std::vector<std::uint32_t> expected = {7, 8, 0, 0, 0};
    EXPECT_EQ(valueFrom<std::vector<std::uint32_t>>("05 00 00 00  07 00 00 00  08 00 00 00", {}),
              expected);
}

TEST(WireReader, ACutElementAndAllBehindItAreDefault) {
    const std::vector<std::string> expected = {"a", "", ""};
    EXPECT_EQ(
        valueFrom<std::vector<std::string>>("03 00 00 00  01 00 00 00 'a'  05 00 00 00 'b'", {}),
        expected);
}

TEST(WireReader, AMissingCountLeavesAnEmptySequence) {
    EXPECT_TRUE(valueFrom<std::vector<std::uint32_t>>("01 00", {}).empty());
}

TEST(WireReader, ASequenceReplacesWhatWasThere) {
    const std::vector<std::uint32_t> expected = {9};
    EXPECT_EQ(valueFrom<std::vector<std::uint32_t>>("01 00 00 00  09 00 00 00", {1, 2, 3}),
              expected);
}

TEST(WireReader, MissingEntriesOfAMapCollapseOntoTheEmptyKey) {
    using Map = std::map<std::string, std::string>;
    const Map expected = {{"k", "v"}, {"", ""}};
    EXPECT_EQ(valueFrom<Map>("04 00 00 00  01 00 00 00 'k'  01 00 00 00 'v'", {}), expected);
}

TEST(WireReader, AMapWithTheLargestCountEndsAtTheDataEnd) {
    using Map = std::map<std::string, std::string>;
    const Map expected = {{"k", ""}, {"", ""}};
    EXPECT_EQ(valueFrom<Map>("FF FF FF FF  01 00 00 00 'k'", {}), expected);
}

TEST(WireReader, ABareRunTakesAsManyWholeWordsAsThereAre) {
    using Run = wire::BareRun<std::uint32_t>;
    const std::vector<std::uint32_t> expected = {1, 2};
    EXPECT_EQ(valueFrom<Run>("01 00 00 00  02 00 00 00  03 00 00", {}).items, expected);
    EXPECT_TRUE(valueFrom<Run>("01 00 00", {}).items.empty());
}

TEST(WireReader, AListInsideAListReadsItsOwnCount) {
    const std::vector<std::vector<std::uint32_t>> expected = {{1}, {}, {2, 3}};
    EXPECT_EQ(valueFrom<std::vector<std::vector<std::uint32_t>>>(
                  "03 00 00 00  01 00 00 00  01 00 00 00  00 00 00 00"
                  "02 00 00 00  02 00 00 00  03 00 00 00",
                  {}),
              expected);
}

TEST(WireReader, EveryByteValueIsReadWithoutSign) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const std::string payload = wordOf(byte * 0x01010101u);
        std::uint32_t value = 0;
        wire::Reader(payload).get(value);
        EXPECT_EQ(value, byte * 0x01010101u);
    }
}

// Arrays of numbers are copied whole.

TEST(WireReader, AnArrayTakesItsWholeElementsAndLeavesTheRest) {
    const std::string payload = bytesOf("03 00 00 00  01 00 00 00  FE FF FF FF  AA BB");
    wire::Reader reader(payload);
    std::vector<std::int32_t> items;
    reader.get(items);
    EXPECT_EQ(items, (std::vector<std::int32_t>{1, -2, 0})) << "what is not there is 0";
    std::uint8_t cut = 7;
    reader.get(cut);
    EXPECT_EQ(cut, 7) << "two bytes are no value";
    wire::BareRun<double> none;
    reader.get(none);
    EXPECT_TRUE(none.items.empty());
}

TEST(WireReader, WhatStandsBehindAnArrayIsReadNext) {
    std::string payload;
    wire::Writer writer(payload);
    writer.put(std::vector<double>{1.5, -2.5});
    writer.put(std::vector<double>{});
    writer.put(std::vector<std::uint32_t>{0x80000001u});
    writer.put(std::uint32_t{77});
    EXPECT_EQ(payload.size(), 4u + 16 + 4 + 4 + 4 + 4);
    wire::Reader reader(payload);
    std::vector<double> numbers, empty = {1};
    std::vector<std::uint32_t> words;
    std::uint32_t last = 0;
    reader.get(numbers);
    reader.get(empty);
    reader.get(words);
    reader.get(last);
    EXPECT_EQ(numbers, (std::vector<double>{1.5, -2.5}));
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(words, (std::vector<std::uint32_t>{0x80000001u}));
    EXPECT_EQ(last, 77u);
}

TEST(WireReader, ADoubleInAnArrayKeepsEachOfItsBits) {
    // A signalling NaN: arithmetic would make a quiet one of it.
    const std::string payload =
        bytesOf("02 00 00 00  01 00 00 00 00 00 F4 7F  00 00 00 00 00 00 00 80");
    std::vector<double> items;
    wire::Reader(payload).get(items);
    ASSERT_EQ(items.size(), 2u);
    std::string again;
    wire::Writer(again).put(items);
    EXPECT_EQ(again, payload);
}
