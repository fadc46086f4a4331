// The rows of the table of operations, told again by hand: QOR's stations, and the lines that they
// file by, know operations by these numbers and names.
#include "facade/channel/Kind.h"

#include <gmock/gmock.h>

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "TimedOperationTable.h"

namespace {

using channel::Kind;
using channel::Wait;
using ::testing::ElementsAreArray;

struct Row {
    std::uint32_t number;
    const char* name;
    Wait wait;

    bool operator==(const Row& other) const {
        return number == other.number && std::string(name) == other.name && wait == other.wait;
    }
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.number << " " << row.name << " waits " << static_cast<int>(row.wait);
}

const Row byHand[] = {
    {2, "openModel", Wait::none},
    {3, "connect", Wait::unlimited},
    {4, "getParamDescription", Wait::threeSeconds},
    {5, "getParamData", Wait::twice},
    {6, "setParamData", Wait::twice},
    {7, "startDtcRead", Wait::none},
    {8, "stopDtcRead", Wait::none},
    {9, "clearDtc", Wait::once},
    {16, "setEcuSegment", Wait::unlimited},
    {17, "stopParamRead", Wait::none},
    {18, "getDtcByStatus", Wait::twice},
    {20, "sendKwpCommand", Wait::twice},
    {21, "connectCanBus", Wait::none},
    {22, "getCanBusData", Wait::twice},
    {23, "getParamDataAtOnce", Wait::twice},
    {24, "setDynamicData", Wait::twice},
    {25, "pingQor", Wait::twice},
    {32, "sendCanBusMsg", Wait::twice},
    {33, "startDirectCtrl", Wait::twice},
    {34, "stopDirectCtrl", Wait::twice},
};

TEST(OperationTable, EveryKindHasItsNumberItsNameAndItsWait) {
    std::vector<Row> rows;
    for (const auto& row : channel::operations)
        rows.push_back({static_cast<std::uint32_t>(row.kind), row.name, row.wait});
    EXPECT_THAT(rows, ElementsAreArray(byHand));
}

TEST(OperationTable, EveryOperationThatWaitsForATimeIsTestedAsSuch) {
    std::set<Kind> tested;
    for (const TimedOperation& operation : timedOperations()) tested.insert(operation.kind);
    for (const auto& row : channel::operations) {
        const bool isTimed = row.wait != Wait::none && row.wait != Wait::unlimited;
        EXPECT_EQ(tested.count(row.kind), isTimed ? 1u : 0u) << row.name;
    }
}

TEST(OperationTable, AWaitOfThreeSecondsKnowsNoTimeOut) {
    EXPECT_EQ(channel::waitMs(Wait::threeSeconds, 0), 3000u);
    EXPECT_EQ(channel::waitMs(Wait::threeSeconds, 0xFFFFFFFFu), 3000u);
}

TEST(OperationTable, AWaitOfTheTimeOutItselfIsNotDoubled) {
    EXPECT_EQ(channel::waitMs(Wait::once, 0), 0u);
    EXPECT_EQ(channel::waitMs(Wait::once, 700), 700u);
    EXPECT_EQ(channel::waitMs(Wait::once, 0xFFFFFFFFu), 0xFFFFFFFFu);
}

}  // namespace
