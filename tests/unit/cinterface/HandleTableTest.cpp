#include "cinterface/HandleTable.h"

#include <gmock/gmock.h>

#include <set>

using cinterface::HandleTable;
using cinterface::NumberKind;

namespace {

using Handles = HandleTable<int, NumberKind::handle>;
using Streams = HandleTable<int, NumberKind::stream>;

TEST(HandleTable, FindsWhatWasAddedByItsNumberAndNothingElse) {
    Handles table;
    const auto one = table.add(std::make_shared<int>(1));
    const auto two = table.add(std::make_shared<int>(2));
    EXPECT_EQ(1, *table.find(one));
    EXPECT_EQ(2, *table.find(two));
    for (const std::uint32_t number : {0u, 1u, one + 1, one - 1, two + (1u << 15), 0xFFFFFFFFu})
        EXPECT_EQ(nullptr, table.find(number)) << number;
}

TEST(HandleTable, ANumberThatWasRemovedStaysForeign) {
    Handles table;
    const auto number = table.add(std::make_shared<int>(1));
    EXPECT_EQ(1, *table.remove(number));
    EXPECT_EQ(nullptr, table.remove(number));
    const auto next = table.add(std::make_shared<int>(2));
    EXPECT_NE(number, next);
    EXPECT_EQ(nullptr, table.find(number));
    EXPECT_EQ(2, *table.find(next));
}

TEST(HandleTable, NumbersOfTheOtherKindAreForeign) {
    Handles handles;
    Streams streams;
    const auto handle = handles.add(std::make_shared<int>(1));
    const auto stream = streams.add(std::make_shared<int>(1));
    EXPECT_EQ(nullptr, streams.find(handle));
    EXPECT_EQ(nullptr, handles.find(stream));
}

TEST(HandleTable, WhatIsInUseOutlivesItsRemoval) {
    Handles table;
    const auto number = table.add(std::make_shared<int>(7));
    const auto inUse = table.find(number);
    table.remove(number);
    EXPECT_EQ(7, *inUse);
}

TEST(HandleTable, IsFullAtItsEndAndTakesAgainWhatWasGivenBack) {
    Handles table;
    std::uint32_t last = 0;
    for (unsigned i = 0; i < Handles::maxEntries; ++i) last = table.add(std::make_shared<int>(0));
    EXPECT_NE(0u, last);
    EXPECT_EQ(0u, table.add(std::make_shared<int>(0)));
    table.remove(last);
    EXPECT_NE(0u, table.add(std::make_shared<int>(0)));
}

TEST(HandleTable, NoNumberComesTwiceAndAPlaceIsGivenUpWhenItsNumbersAre) {
    Handles table;
    const auto object = std::make_shared<int>(0);
    std::uint32_t before = 0;
    for (unsigned i = 0; i < Handles::maxUses; ++i) {
        const auto number = table.add(object);
        ASSERT_GT(number, before);  // the same place, used once more
        before = number;
        table.remove(number);
    }
    const auto next = table.add(object);  // of another place
    EXPECT_LT(next, before);
    EXPECT_NE(0u, next);
    EXPECT_EQ(object, table.find(next));
    EXPECT_EQ(nullptr, table.find(before));
}

}  // namespace
