#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "facade/channel/OperationTable.h"
#include "support/MarkdownTable.h"
#include "TimedOperationTable.h"

namespace {

using channel::Kind;
using channel::Wait;

const char* wordsOf(Wait wait) {
    switch (wait) {
        case Wait::none:
            return "not at all";
        case Wait::unlimited:
            return "without limit";
        case Wait::twice:
            return "twice the time-out";
        case Wait::once:
            return "the time-out";
        case Wait::threeSeconds:
            return "3000 ms";
    }
    return "";
}

/// Stations, and the lines that they file by, know operations by these numbers and names.
TEST(OperationTable, IsThatOfTheDocument) {
    std::vector<std::vector<std::string>> built;
    for (const auto& row : channel::operations)
        built.push_back({std::to_string(static_cast<std::uint32_t>(row.kind)),
                         "`" + std::string(row.name) + "`", wordsOf(row.wait)});
    const auto document = testing_support::linesOfDocument(BINDING_DOCUMENT);
    EXPECT_EQ(testing_support::tableOf(document, "| kind | operation | the facade waits |"), built);
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
