#include "PeerConversation.h"

#include <gmock/gmock.h>

#include "BarePeer.h"
#include "wire/Payloads.h"

using barepeer::Conversation;
using simulator::CommandId;
using simulator::DirectCtrlPayload;
using simulator::ParamInfoPayload;
using simulator::PingPayload;
using simulator::ReadTogetherPayload;
using simulator::Record;
using simulator::StaticParamPayload;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

constexpr std::uint32_t requestId = 7;

/// Keeps what is said.
class KeptWay final : public barepeer::Way {
public:
    explicit KeptWay(bool isAcknowledgedAtOnce = false) : atOnce_(isAcknowledgedAtOnce) {}
    bool send(const Record& record) override {
        sent.push_back(record);
        return atOnce_;
    }
    void acknowledge(const Record&) override { ++acknowledged; }

    std::vector<Record> sent;
    int acknowledged = 0;

private:
    const bool atOnce_;
};

Record request(CommandId id, const std::string& payload) {
    return {id, false, requestId, payload};
}

/// What the peer answers at once.
Record answerTo(const Record& asked) {
    KeptWay way;
    Conversation(way, 0).handle(asked);
    EXPECT_THAT(way.sent, SizeIs(1));
    return way.sent.at(0);
}

ParamInfoPayload described(const char* name) {
    ParamInfoPayload info;
    info.name = name;
    return ParamInfoPayload::read(answerTo(request(CommandId::GetParamInfo, info.write())).payload);
}

Record together(const std::vector<std::uint32_t>& indices) {
    ReadTogetherPayload asked;
    asked.indices = indices;
    for (const std::uint32_t index : indices) asked.names.push_back("R" + std::to_string(index));
    return request(CommandId::ReadTogether, asked.write());
}

Record pushing(double window, double burst, double periodUs) {
    DirectCtrlPayload asked;
    asked.index = static_cast<std::uint32_t>(described(barepeer::push).index);
    asked.operation = DirectCtrlPayload::Write;
    asked.values = {window, burst, periodUs};
    return request(CommandId::DirectCtrl, asked.write());
}

}  // namespace

TEST(PeerConversation, TheParameterOfThreeArraysIsDescribedAsOneAndHasThemAll) {
    EXPECT_TRUE(described(barepeer::arrays).threeArrays);
    EXPECT_FALSE(described("R1").threeArrays);
    const Record answer =
        answerTo(request(CommandId::StaticParam, StaticParamPayload{102, 1, {}, {}, {}}.write()));
    EXPECT_TRUE(answer.isReply);
    EXPECT_EQ(requestId, answer.requestId);
    const auto read = StaticParamPayload::read(answer.payload);
    EXPECT_EQ(described(barepeer::arrays).index, static_cast<int>(read.index));
    EXPECT_THAT(read.first, SizeIs(barepeer::perArray));
    EXPECT_THAT(read.second, SizeIs(barepeer::perArray));
    EXPECT_THAT(read.third, SizeIs(barepeer::perArray));
}

TEST(PeerConversation, ReadsTogetherAreAnsweredForWhatWasAskedLast) {
    KeptWay way;
    Conversation conversation(way, 0);
    conversation.handle(together({1, 2}));
    conversation.handle(together({3, 4}));
    conversation.handle(together({3, 4}));
    ASSERT_THAT(way.sent, SizeIs(3));
    for (const std::size_t i : {1U, 2U}) {
        const auto read = ReadTogetherPayload::read(way.sent.at(i).payload);
        EXPECT_THAT(read.indices, ElementsAre(3, 4));
        EXPECT_THAT(read.values, ElementsAre(ElementsAre(3), ElementsAre(4)));
        EXPECT_THAT(read.names, ElementsAre("R3", "R4"));
    }
}

TEST(PeerConversation, AWindowOfValuesIsPushedAndNoMoreUntilOneIsAcknowledged) {
    KeptWay way;
    Conversation conversation(way, 3);
    conversation.pushDue();
    conversation.pushDue();
    EXPECT_THAT(way.sent, SizeIs(3));
    conversation.handle({CommandId::Ping, true, way.sent.at(0).requestId,
                         PingPayload{PingPayload::Handled}.write()});
    conversation.pushDue();
    EXPECT_THAT(way.sent, SizeIs(4));
}

TEST(PeerConversation, AValueThatIsAcknowledgedAsItIsSentIsOnItsWayNoMore) {
    KeptWay way(true);
    Conversation conversation(way, 3);
    conversation.pushDue();
    conversation.pushDue();
    EXPECT_THAT(way.sent, SizeIs(6));
}

TEST(PeerConversation, ABurstComesOnceInAPeriodAndThePeerSleepsUntilThen) {
    constexpr double hourUs = 3.6e9;
    KeptWay way;
    Conversation conversation(way, 0);
    EXPECT_EQ(1e6, conversation.idleUs()) << "nothing is to be pushed";
    conversation.handle(pushing(0, 5, hourUs));
    EXPECT_EQ(1, way.acknowledged);
    EXPECT_EQ(0, conversation.idleUs());
    conversation.pushDue();
    conversation.pushDue();
    EXPECT_THAT(way.sent, SizeIs(5));
    EXPECT_EQ(1e6, conversation.idleUs());
}
