// The conversation when the link gives every record a result: nothing is acknowledged by a record.
#include "TestSupport.h"

namespace simulator::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class WindowHarness : public ConversationHarness {
public:
    explicit WindowHarness(const std::string& script = "{}",
                           AnswerStyle style = AnswerStyle::Stamped)
        : ConversationHarness(script, style, Transport::WindowMessages) {}

    Reception hand(CommandId id, const std::string& payload = {}) {
        return conversation().received({id, false, 77, payload}, nowMs());
    }
};

std::string ruleWith(const std::string& action) {
    return "{'rules': [{'match': {}, 'action': " + action + "}]}";
}

std::string nameRequest(const std::string& name) {
    ParamInfoPayload request;
    request.name = name;
    return request.write();
}

TEST(WindowConversation, ARequestWithoutAnswerIsAcceptedAndNothingMoreIsSent) {
    WindowHarness qor;
    EXPECT_TRUE(qor.hand(CommandId::Ping).accepted);
    EXPECT_THAT(qor.pieces(), IsEmpty());
}

TEST(WindowConversation, WhatCannotBeDoneIsNotAccepted) {
    WindowHarness qor;
    SegmentPayload segment;
    segment.segment = "NoPage";
    EXPECT_FALSE(qor.hand(CommandId::EcuSegment, segment.write()).accepted);
    EXPECT_FALSE(qor.hand(static_cast<CommandId>(13)).accepted);
    EXPECT_THAT(qor.pieces(), IsEmpty());
}

TEST(WindowConversation, AnAnswerIsOneRecordInBothStyles) {
    for (const auto& [style, isReply] :
         {std::pair{AnswerStyle::Stamped, true}, {AnswerStyle::Separate, false}}) {
        WindowHarness qor("{}", style);
        EXPECT_TRUE(qor.hand(CommandId::GetParamInfo, nameRequest("Scalar")).accepted);
        const auto pieces = qor.pieces();
        ASSERT_THAT(pieces, SizeIs(1));
        EXPECT_EQ(pieces[0].record->id, CommandId::GetParamInfo);
        EXPECT_EQ(pieces[0].record->isReply, isReply);
        EXPECT_EQ(pieces[0].record->requestId == 77, isReply);
    }
}

TEST(WindowConversation, TheStatusOfAnAcknowledgementIsTheResult) {
    EXPECT_FALSE(WindowHarness(ruleWith("{'ackStatus': 2}")).hand(CommandId::Ping).accepted);
    EXPECT_TRUE(WindowHarness(ruleWith("{'ackStatus': 0}")).hand(CommandId::Ping).accepted);
    WindowHarness refusing(ruleWith("{'answer': 'refuse'}"));
    EXPECT_FALSE(refusing.hand(CommandId::Ping).accepted);
}

TEST(WindowConversation, ASilentRequestIsAcceptedAndNotCarriedOut) {
    WindowHarness qor(ruleWith("{'answer': 'silent'}"));
    EXPECT_TRUE(qor.hand(CommandId::Shutdown, ShutdownPayload{6}.write()).accepted);
    EXPECT_THAT(qor.pieces(), IsEmpty());
    EXPECT_FALSE(qor.conversation().exit());
}

TEST(WindowConversation, AnAcknowledgementAloneIsTheResultAlone) {
    WindowHarness qor(ruleWith("{'answer': 'ackOnly'}"));
    EXPECT_TRUE(qor.hand(CommandId::GetParamInfo, nameRequest("Scalar")).accepted);
    EXPECT_THAT(qor.pieces(), IsEmpty());
}

TEST(WindowConversation, DuplicatesOfAnAnswerAreMessagesOfTheirOwn) {
    WindowHarness qor(ruleWith("{'duplicates': 2}"));
    qor.hand(CommandId::Ping);
    EXPECT_THAT(qor.pieces(), IsEmpty());
    qor.hand(CommandId::GetParamInfo, nameRequest("Scalar"));
    EXPECT_THAT(qor.pieces(), SizeIs(3));
}

TEST(WindowConversation, ASlowServiceIsAcceptedFirstAndAnsweredLater) {
    WindowHarness qor;
    qor.connectEcu();
    const KwpPayload request{2, 0x11, "", 1000, false};
    EXPECT_TRUE(qor.hand(CommandId::ExecKwp, request.write()).accepted);
    EXPECT_THAT(qor.pieces(), IsEmpty());
    EXPECT_THAT(qor.wait(300), SizeIs(1));
}

TEST(WindowConversation, TheLinkIsToldToHangAndHowToAnswer) {
    WindowHarness qor(ruleWith("{'hangMs': 30, 'windowAnswer': 'later'}"));
    const Reception reception = qor.hand(CommandId::Ping);
    EXPECT_EQ(reception.hangMs, 30U);
    EXPECT_EQ(reception.windowAnswer, WindowAnswer::Later);
    EXPECT_EQ(WindowHarness().hand(CommandId::Ping).windowAnswer, std::nullopt);
}

TEST(WindowConversation, AMessageOfAnyFormLeavesAsItIs) {
    WindowHarness qor("{'at': [{'since': 'start', 'message': {'tag': 9, 'hex': 'AA'}}]}");
    const auto pieces = qor.pieces();
    ASSERT_THAT(pieces, SizeIs(1));
    EXPECT_EQ(pieces[0].form.tag, 9U);
    EXPECT_EQ(pieces[0].bytes, "\xAA");
}

TEST(WindowConversation, AFloodComesInSlicesUntilItsEnd) {
    WindowHarness qor("{'at': [{'since': 'start', 'flood': {'count': 120, 'seed': 3}}]}");
    EXPECT_THAT(qor.pieces(), SizeIs(10));
    std::size_t more = 0;
    for (int i = 0; i < 20; ++i) {
        more += qor.passMs(1).size();
    }
    EXPECT_EQ(more, 110U);
}

}  // namespace
}  // namespace simulator::test
