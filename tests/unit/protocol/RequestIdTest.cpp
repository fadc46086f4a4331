// Where request ids come from, and how an answer takes over that of its request.
#include "protocol/RequestId.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "HexBytes.h"
#include "protocol/Commands.h"

using testing_support::bytesOf;
using testing_support::hexOf;

namespace {

// Stamps as every transport does, and keeps the bytes instead of sending them.
class KeepingReplyer : public IExternalCommand::ICommandReplyer {
public:
    explicit KeepingReplyer(const ExternalCommand& received) : received_(received) {}

    bool reply(std::unique_ptr<IExternalCommand> answer, unsigned int) override {
        dynamic_cast<ExternalCommand&>(*answer).stampAsReplyTo(received_.requestId());
        answer->write(sent);
        return true;
    }

    std::string sent;

private:
    const ExternalCommand& received_;
};

}  // namespace

TEST(RequestId, TwoCommandsConstructedBackToBackCarryDifferentRequestIds) {
    const CommandPing first;
    const CommandPing second;
    EXPECT_NE(first.requestId(), second.requestId());
}

TEST(RequestId, AThousandDrawnIdsHardlyEverRepeat) {
    std::set<std::uint32_t> ids;
    for (int i = 0; i < 1000; ++i) ids.insert(protocol::drawRequestId());
    // With 2^32 values, two equal pairs among a thousand happen less than once in 10^7 runs.
    EXPECT_GE(ids.size(), 999u);
}

TEST(RequestId, EveryBitOfAnIdIsUsedBothWays) {
    std::uint32_t everSet = 0;
    std::uint32_t everClear = 0;
    for (int i = 0; i < 200; ++i) {
        const std::uint32_t id = protocol::drawRequestId();
        everSet |= id;
        everClear |= ~id;
    }
    EXPECT_EQ(everSet, 0xFFFFFFFFu);
    EXPECT_EQ(everClear, 0xFFFFFFFFu);
}

TEST(RequestId, AnAnswerWrittenByAReplyerCarriesTheRequestsIdNotItsOwn) {
    std::size_t consumed = 0;
    const auto request = CommandEcuToolRoutine().parse(
        bytesOf("08 00 00 00  01 02 03 04  04 00 00 00  03 00 00 00"), consumed);
    ASSERT_NE(request, nullptr);
    KeepingReplyer replyer(dynamic_cast<const ExternalCommand&>(*request));
    ASSERT_TRUE(replyer.reply(std::make_unique<CommandPing>(protocol::Ping{1}), 0));
    EXPECT_EQ(hexOf(replyer.sent), hexOf(bytesOf("00 00 01 00  01 02 03 04"
                                                 "04 00 00 00  01 00 00 00")));
}

TEST(RequestId, StampingKeepsTheCommandId) {
    CommandCanBusSend answer;
    answer.stampAsReplyTo(0);
    EXPECT_EQ(answer.getId(), 19u);
    EXPECT_TRUE(answer.isReply());
    EXPECT_EQ(answer.requestId(), 0u);
}
