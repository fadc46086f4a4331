#include "operations/Operation.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "facade/channel/OperationTable.h"

namespace {

using channel::Kind;

/// The commands of a batch are single requests; streams are watched by commands of their own.
const std::set<Kind> streams{Kind::startDtcRead, Kind::stopDtcRead, Kind::stopParamRead};

bool hasCommand(const std::string& operation) {
    for (const qorctl::Operation& command : qorctl::operations())
        if (std::string(command.summary).find("(" + operation + ")") != std::string::npos)
            return true;
    return false;
}

TEST(Operations, EveryRequestOfTheFacadeIsACommandThatNamesIt) {
    for (const auto& row : channel::operations)
        EXPECT_EQ(hasCommand(row.name), streams.count(row.kind) == 0) << row.name;
}

}  // namespace
