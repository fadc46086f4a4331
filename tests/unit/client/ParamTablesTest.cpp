#include "client/ParamTables.h"

#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::NotNull;

constexpr std::size_t mib = 1u << 20;

class ParamTablesTest : public ::testing::Test {
protected:
    static std::vector<double> valuesOf(std::size_t bytes) {
        return std::vector<double>(bytes / sizeof(double));
    }
    void storeValues(std::int32_t index, std::size_t bytes) {
        tables.storeValues(index, valuesOf(bytes));
    }
    void storeSample(std::int32_t index, std::size_t bytes) {
        tables.storeSample(index, {valuesOf(bytes / 2), valuesOf(bytes / 4), valuesOf(bytes / 4),
                                   common::Moment(7)});
    }
    void storeDescription(const std::string& name, std::int32_t index, std::size_t bytes = 0) {
        protocol::ParamInfo record;
        record.name = name;
        record.firstText = std::string(bytes / 2, 'x');
        record.thirdText = std::string(bytes / 2, 'x');
        record.paramIndex = index;
        tables.storeDescription(name, record);
    }
    /// So much that nothing older can stay beside it.
    void flood() {
        for (std::int32_t index = 1000; index < 1004; ++index) storeValues(index, 20 * mib);
    }

    ParamTables tables;
};

TEST_F(ParamTablesTest, WhatWasStoredIsFoundUnderItsKeyAndInItsTableOnly) {
    storeDescription("Speed", 5);
    tables.storeValues(5, {1.0, 2.0});
    tables.storeSample(6, {{3.0}, {4.0}, {5.0}, common::Moment(99)});
    EXPECT_EQ(tables.description("Speed")->paramIndex, 5);
    EXPECT_EQ(tables.description("speed"), nullptr);
    EXPECT_THAT(*tables.values(5), ElementsAre(1.0, 2.0));
    EXPECT_EQ(tables.values(6), nullptr);
    EXPECT_THAT(tables.sample(6)->third, ElementsAre(5.0));
    EXPECT_EQ(tables.sample(6)->tick, common::Moment(99));
    EXPECT_EQ(tables.sample(5), nullptr);
}

TEST_F(ParamTablesTest, AnEntryIsReplacedAndDropped) {
    tables.storeValues(5, {1.0});
    tables.storeValues(5, {2.0});
    storeDescription("Speed", 1);
    storeDescription("Speed", 2);
    EXPECT_THAT(*tables.values(5), ElementsAre(2.0));
    EXPECT_EQ(tables.description("Speed")->paramIndex, 2);
    tables.dropValues(5);
    tables.dropDescription("Speed");
    tables.dropSample(5);
    EXPECT_EQ(tables.values(5), nullptr);
    EXPECT_EQ(tables.description("Speed"), nullptr);
    EXPECT_EQ(tables.heldBytes(), 0u);
}

TEST_F(ParamTablesTest, WhatIsHeldIsCountedInBytes) {
    storeValues(1, 800);
    EXPECT_EQ(tables.heldBytes(), 800 + ParamTables::entryBytes);
    storeValues(1, 80);
    EXPECT_EQ(tables.heldBytes(), 80 + ParamTables::entryBytes);
    storeSample(1, 1600);
    EXPECT_EQ(tables.heldBytes(), 1680 + 2 * ParamTables::entryBytes);
    tables.dropValues(1);
    EXPECT_EQ(tables.heldBytes(), 1600 + ParamTables::entryBytes);
    tables.clear();
    EXPECT_EQ(tables.heldBytes(), 0u);
}

TEST_F(ParamTablesTest, TheThreeTablesTogetherNeverHoldMoreThanTheirBound) {
    for (std::int32_t index = 0; index < 60; ++index) {
        storeValues(index, 3 * mib);
        storeSample(index, 3 * mib);
        storeDescription("P" + std::to_string(index), index, 3 * mib);
        EXPECT_LE(tables.heldBytes(), ParamTables::maxBytes);
    }
}

TEST_F(ParamTablesTest, ManySmallEntriesAreBoundedToo) {
    for (std::int32_t index = 0; index < 500000; ++index) tables.storeValues(index, {1.0});
    EXPECT_LE(tables.heldBytes(), ParamTables::maxBytes);
    EXPECT_EQ(tables.values(0), nullptr);
    EXPECT_THAT(tables.values(499999), NotNull());
}

TEST_F(ParamTablesTest, WhatIsKnownIsReplacedInFullTablesToo) {
    tables.storeValues(5, {1.0});
    storeDescription("Speed", 1);
    for (std::int32_t index = 1000; index < 1003; ++index) storeValues(index, 21 * mib);
    tables.storeValues(5, {2.0});
    storeDescription("Speed", 2);
    EXPECT_THAT(*tables.values(5), ElementsAre(2.0));
    EXPECT_EQ(tables.description("Speed")->paramIndex, 2);
}

TEST_F(ParamTablesTest, TheOldestMakeRoomFirst) {
    for (std::int32_t index = 0; index < 6; ++index) storeValues(index, 10 * mib);
    storeValues(0, 10 * mib);  // the newest now
    storeValues(6, 10 * mib);
    EXPECT_EQ(tables.values(1), nullptr);
    EXPECT_THAT(tables.values(0), NotNull());
    EXPECT_THAT(tables.values(2), NotNull());
}

TEST_F(ParamTablesTest, TheNewestStaysHoweverLargeItIs) {
    storeValues(1, mib);
    storeValues(2, 70 * mib);
    EXPECT_EQ(tables.values(1), nullptr);
    EXPECT_THAT(tables.values(2), NotNull());
    storeValues(3, mib);
    EXPECT_EQ(tables.values(2), nullptr);
    EXPECT_THAT(tables.values(3), NotNull());
}

TEST_F(ParamTablesTest, WhatSomebodyWaitsForStays) {
    storeDescription("Speed", 5);
    storeValues(5, 100);
    storeSample(6, 100);
    tables.await("Speed");
    tables.await(std::vector<std::int32_t>{5, 6});
    flood();
    EXPECT_THAT(tables.description("Speed"), NotNull());
    EXPECT_THAT(tables.values(5), NotNull());
    EXPECT_THAT(tables.sample(6), NotNull());
    tables.awaitNothing();
    flood();
    EXPECT_EQ(tables.description("Speed"), nullptr);
    EXPECT_EQ(tables.values(5), nullptr);
    EXPECT_EQ(tables.sample(6), nullptr);
}

TEST_F(ParamTablesTest, ADescriptionWithoutANameMakesRoomLikeAnyOther) {
    storeDescription("", 5, 60 * mib);
    storeValues(1, 10 * mib);
    EXPECT_EQ(tables.description(""), nullptr);
    EXPECT_THAT(tables.values(1), NotNull());
}

TEST_F(ParamTablesTest, WhatSomebodyWaitsForHasABoundToo) {
    std::vector<std::int32_t> indices;
    for (std::int32_t index = 0; index < 30; ++index) indices.push_back(index);
    tables.await(indices);
    for (const std::int32_t index : indices) storeValues(index, 15 * mib);
    EXPECT_LE(tables.heldBytes(), ParamTables::maxAwaitedBytes);
    EXPECT_THAT(tables.values(29), NotNull());
    EXPECT_THAT(tables.values(20), NotNull());
}

TEST_F(ParamTablesTest, WhatIsStreamedStaysAsLongAsAnythingElseCanGo) {
    storeDescription("Speed", 5);
    storeSample(5, 100);
    storeDescription("Load", 6);
    storeSample(6, 100);
    tables.count({5}, 1);
    flood();
    EXPECT_THAT(tables.description("Speed"), NotNull());
    EXPECT_THAT(tables.sample(5), NotNull());
    EXPECT_EQ(tables.description("Load"), nullptr);
    EXPECT_EQ(tables.sample(6), nullptr);
}

TEST_F(ParamTablesTest, EvenStreamedEntriesDoNotExceedTheBound) {
    std::vector<std::int32_t> indices;
    for (std::int32_t index = 0; index < 40; ++index) indices.push_back(index);
    tables.count(indices, 1);
    for (const std::int32_t index : indices) {
        storeSample(index, 4 * mib);
        EXPECT_LE(tables.heldBytes(), ParamTables::maxBytes);
    }
    EXPECT_THAT(tables.sample(39), NotNull());
}

TEST_F(ParamTablesTest, TheStreamsOfAnIndexAreCounted) {
    tables.count({3, 5, 3}, 1);
    EXPECT_THAT(tables.streamed(), ElementsAre(3, 5));
    tables.count({3, 5}, -1);
    EXPECT_THAT(tables.streamed(), ElementsAre(3));
    tables.count({3, 4, 3, 3}, -1);
    EXPECT_THAT(tables.streamed(), IsEmpty());
    tables.count({3}, 1);
    EXPECT_THAT(tables.streamed(), ElementsAre(3));
}

TEST_F(ParamTablesTest, AllCanBeForgottenAtOnce) {
    storeDescription("Speed", 5);
    storeSample(5, 100);
    tables.count({5}, 1);
    tables.clear();
    EXPECT_EQ(tables.description("Speed"), nullptr);
    EXPECT_EQ(tables.sample(5), nullptr);
    EXPECT_THAT(tables.streamed(), IsEmpty());
    storeSample(6, 100);
    EXPECT_THAT(tables.sample(6), NotNull());
}

}  // namespace
