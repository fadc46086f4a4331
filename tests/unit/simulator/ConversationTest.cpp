#include "behaviour/Conversation.h"

#include <cmath>

#include "TestSupport.h"

namespace simulator::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

enum Index : std::uint32_t { Scalar, Array, Curve, Map, Text, Actuator, Live };

std::string directCtrl(std::uint32_t index, std::uint32_t operation,
                       const std::vector<double>& values = {}) {
    return DirectCtrlPayload{index, operation, values, ""}.write();
}

std::string nameRequest(const std::string& name) {
    ParamInfoPayload request;
    request.name = name;
    return request.write();
}

std::string connectRequest(std::uint32_t protocol, std::uint32_t mode,
                           const std::string& dll = {}) {
    ConnectPayload connect;
    connect.protocol = protocol;
    connect.mode = mode;
    connect.securityDll = dll;
    return connect.write();
}

// The pushed values among the records as "index:value".
std::vector<std::string> pushes(const std::vector<Record>& records) {
    std::vector<std::string> texts;
    for (const Record& record : records) {
        if (record.id != CommandId::ReceiveParamData) continue;
        const ParamDataPayload data = ParamDataPayload::read(record.payload);
        texts.push_back(std::to_string(data.index) + ":" +
                        std::to_string(static_cast<int>(data.value)));
    }
    return texts;
}

TEST(Conversation, APingIsAcknowledged) {
    ConversationHarness qor;
    const auto answer = qor.ask(CommandId::Ping, PingPayload{}.write());
    ASSERT_THAT(answer, SizeIs(1));
    EXPECT_TRUE(isAcknowledgement(answer[0], 1));
}

TEST(Conversation, AReplyIsNeverAnswered) {
    ConversationHarness qor;
    qor.conversation().received({CommandId::Ping, true, 1, PingPayload{2}.write()}, qor.nowMs());
    qor.conversation().received({CommandId::GetParamInfo, true, 1, nameRequest("Scalar")},
                                qor.nowMs());
    EXPECT_THAT(qor.pieces(), IsEmpty());
}

TEST(Conversation, ACommandThatDoesNotExistIsNotHandled) {
    ConversationHarness qor;
    for (const unsigned id : {13U, 20U, 6U, 0xFFFFU}) {
        const auto answer = qor.ask(static_cast<CommandId>(id), "x");
        ASSERT_THAT(answer, SizeIs(1)) << id;
        EXPECT_TRUE(isAcknowledgement(answer[0], 2)) << id;
    }
}

TEST(Conversation, AStampedAnswerCarriesTheRequestIdAndTheReplyFlag) {
    ConversationHarness qor;
    const auto answer = qor.ask(CommandId::GetParamInfo, nameRequest("Scalar"));
    ASSERT_THAT(answer, SizeIs(1));
    EXPECT_TRUE(answer[0].isReply);
    EXPECT_EQ(answer[0].requestId, 77U);
    const ParamInfoPayload info = ParamInfoPayload::read(answer[0].payload);
    EXPECT_EQ(info.firstText, "d");
    EXPECT_EQ(info.secondText, "u");
    EXPECT_EQ(info.thirdText, "g");
    EXPECT_EQ(info.secondLimit, 10.0);
    EXPECT_EQ(info.index, 0);
    EXPECT_FALSE(info.threeArrays);
}

TEST(Conversation, ASeparateAnswerFollowsTheAcknowledgementAsACommandOfItsOwn) {
    ConversationHarness qor("{}", AnswerStyle::Separate);
    const auto answer = qor.ask(CommandId::GetParamInfo, nameRequest("Map"));
    ASSERT_THAT(answer, SizeIs(2));
    EXPECT_TRUE(isAcknowledgement(answer[0], 1));
    EXPECT_EQ(answer[1].id, CommandId::GetParamInfo);
    EXPECT_FALSE(answer[1].isReply);
    EXPECT_NE(answer[1].requestId, 77U);
    EXPECT_TRUE(ParamInfoPayload::read(answer[1].payload).threeArrays);
}

TEST(Conversation, ASeparateActionIsOnlyAcknowledged) {
    ConversationHarness qor("{}", AnswerStyle::Separate);
    const auto answer = qor.ask(CommandId::DirectCtrl, directCtrl(Scalar, 4, {7}));
    ASSERT_THAT(answer, SizeIs(1));
    EXPECT_TRUE(isAcknowledgement(answer[0], 1));
}

TEST(Conversation, AnUnknownNameIsAnsweredWithIndexMinusOne) {
    ConversationHarness qor;
    const auto answer = qor.ask(CommandId::GetParamInfo, nameRequest("Nope"));
    const ParamInfoPayload info = ParamInfoPayload::read(answer.at(0).payload);
    EXPECT_EQ(info.name, "Nope");
    EXPECT_EQ(info.index, -1);
    EXPECT_TRUE(info.threeArrays);
}

TEST(Conversation, AWrittenValueIsReadBack) {
    ConversationHarness qor;
    qor.ask(CommandId::DirectCtrl, directCtrl(Scalar, 4, {7}));
    const auto answer = qor.ask(CommandId::DirectCtrl, directCtrl(Scalar, 1));
    EXPECT_THAT(DirectCtrlPayload::read(answer.at(0).payload).values, ElementsAre(7));
}

TEST(Conversation, AValueOutsideTheLimitsIsRefusedWithAPing) {
    ConversationHarness qor;
    const auto answer = qor.ask(CommandId::DirectCtrl, directCtrl(Scalar, 4, {11}));
    ASSERT_THAT(answer, SizeIs(1));
    EXPECT_TRUE(isAcknowledgement(answer[0], 2));
}

TEST(Conversation, UnknownIndicesAndOperationsAreRefused) {
    ConversationHarness qor;
    const auto refused = [&](CommandId id, const std::string& payload) {
        const auto answer = qor.ask(id, payload);
        return answer.size() == 1 && isAcknowledgement(answer[0], 2);
    };
    EXPECT_TRUE(refused(CommandId::DirectCtrl, directCtrl(99, 1)));
    EXPECT_TRUE(refused(CommandId::DirectCtrl, directCtrl(0xFFFFFFFF, 1)));
    EXPECT_TRUE(refused(CommandId::DirectCtrl, directCtrl(Scalar, 6)));
    EXPECT_TRUE(refused(CommandId::StaticParam, StaticParamPayload{99, 1, {}, {}, {}}.write()));
    EXPECT_TRUE(refused(CommandId::StaticParam, StaticParamPayload{Map, 3, {}, {}, {}}.write()));
    EXPECT_TRUE(refused(CommandId::ReadTogether, ReadTogetherPayload{{0, 99}, {}, {}}.write()));
    EXPECT_TRUE(refused(CommandId::SetParamList, ParamListPayload{{0, 99}}.write()));
    EXPECT_TRUE(refused(CommandId::EcuSegment, SegmentPayload{1, "Flash", false}.write()));
    EXPECT_TRUE(refused(CommandId::EcuToolRoutine, RoutinePayload{2}.write()));
    EXPECT_TRUE(refused(CommandId::StartEdit, EditPayload().write()));
}

TEST(Conversation, AMapIsReadAndWrittenAsValuesAndTwoAxes) {
    ConversationHarness qor;
    StaticParamPayload write{Map, 2, {5, 6, 7, 8}, {1, 2}, {3, 4}};
    qor.ask(CommandId::StaticParam, write.write());
    const auto answer =
        qor.ask(CommandId::StaticParam, StaticParamPayload{Map, 1, {}, {}, {}}.write());
    const StaticParamPayload read = StaticParamPayload::read(answer.at(0).payload);
    EXPECT_THAT(read.first, ElementsAre(5, 6, 7, 8));
    EXPECT_THAT(read.second, ElementsAre(1, 2));
    EXPECT_THAT(read.third, ElementsAre(3, 4));
}

TEST(Conversation, MeasurementsMoveFromTheStartOfTheConversation) {
    ConversationHarness qor;
    const auto read = [&] {
        const auto answer = qor.ask(CommandId::DirectCtrl, directCtrl(Live, 1));
        return DirectCtrlPayload::read(answer.at(0).payload).values.at(0);
    };
    qor.ask(CommandId::DirectCtrl, directCtrl(Actuator, 2));
    qor.ask(CommandId::DirectCtrl, directCtrl(Actuator, 4, {50}));
    EXPECT_NEAR(read(), 10.0, 1e-9);
    qor.wait(1000);
    EXPECT_NEAR(read(), 500 - 490 * std::exp(-1.0), 1e-6);
}

TEST(Conversation, SeveralParametersAreReadTogetherInTheOrderAsked) {
    ConversationHarness qor;
    const auto answer = qor.ask(CommandId::ReadTogether,
                                ReadTogetherPayload{{Array, Scalar}, {}, {"a", "s"}}.write());
    const ReadTogetherPayload read = ReadTogetherPayload::read(answer.at(0).payload);
    EXPECT_THAT(read.indices, ElementsAre(Array, Scalar));
    EXPECT_THAT(read.values, ElementsAre(ElementsAre(1, 2), ElementsAre(5)));
    EXPECT_THAT(read.names, ElementsAre("a", "s"));
}

TEST(Conversation, AConnectIsAcknowledgedBeforeItsFirstReport) {
    ConversationHarness qor("{'bootstrap': {'durationMs': 0, 'steps': 1}}");
    const auto records = qor.ask(CommandId::KwpConnect, connectRequest(1, 0));
    ASSERT_THAT(records, SizeIs(3));
    EXPECT_TRUE(isAcknowledgement(records[0], 1));
    EXPECT_THAT(pushes(records), ElementsAre("-11:100", "-12:-1"));
}

TEST(Conversation, TheOnlineQueryTellsTheEcusStateBeforeDuringAndAfterAConnection) {
    ConversationHarness qor;
    const auto query = [&](std::uint32_t protocol) {
        const auto records = qor.ask(CommandId::KwpConnect, connectRequest(protocol, 2));
        EXPECT_TRUE(isAcknowledgement(records.at(0), 1));
        return pushes(records);
    };
    EXPECT_THAT(query(0), ElementsAre("-10:0"));
    qor.ask(CommandId::KwpConnect, connectRequest(1, 0));
    EXPECT_THAT(query(1), ElementsAre("-10:0"));
    const auto reports = pushes(qor.wait(600));
    EXPECT_THAT(reports, SizeIs(11));
    EXPECT_EQ(reports.back(), "-12:-1");
    EXPECT_THAT(query(1), ElementsAre("-10:1"));
    qor.ask(CommandId::KwpConnect, connectRequest(0, 0));
    EXPECT_THAT(query(0), ElementsAre("-10:0"));
}

TEST(Conversation, ASecurityConnectionNeedsTheLibrary) {
    ConversationHarness qor("{'bootstrap': {'durationMs': 0, 'steps': 0}}");
    EXPECT_THAT(pushes(qor.ask(CommandId::KwpConnect, connectRequest(1, 0x30))),
                ElementsAre("-12:-2"));
    EXPECT_THAT(pushes(qor.ask(CommandId::KwpConnect, connectRequest(1, 0x30, "c:\\s.dll"))),
                ElementsAre("-12:-1"));
}

TEST(Conversation, AConnectionOfAnUnknownKindIsRefused) {
    ConversationHarness qor;
    for (const auto& [protocol, mode] : {std::pair{5U, 0U}, {1U, 7U}, {0U, 1U}}) {
        const auto answer = qor.ask(CommandId::KwpConnect, connectRequest(protocol, mode));
        EXPECT_TRUE(isAcknowledgement(answer.at(0), 2)) << protocol << mode;
    }
}

TEST(Conversation, SubscribedValuesArePushedAtTheRefreshPeriodWhileTheEcuIsOnline) {
    ConversationHarness qor;
    qor.ask(CommandId::SetParamList, ParamListPayload{{Scalar, Array}}.write());
    EXPECT_THAT(qor.wait(300), IsEmpty());
    qor.connectEcu(100);
    EXPECT_THAT(pushes(qor.wait(100)), testing::UnorderedElementsAre("0:5", "1:1"));
    EXPECT_THAT(pushes(qor.wait(300)), SizeIs(6));
    qor.ask(CommandId::SetParamList, "");
    EXPECT_THAT(qor.wait(300), IsEmpty());
}

TEST(Conversation, ARefreshPeriodOfZeroCountsAsTheShortestOne) {
    ConversationHarness qor;
    qor.connectEcu(0);
    qor.ask(CommandId::SetParamList, ParamListPayload{{Scalar}}.write());
    EXPECT_THAT(qor.wait(100), SizeIs(10));
}

TEST(Conversation, PushedValuesSurviveALostClient) {
    ConversationHarness qor;
    qor.connectEcu(100);
    qor.ask(CommandId::SetParamList, ParamListPayload{{Scalar}}.write());
    qor.conversation().clientDisconnected();
    EXPECT_THAT(qor.wait(300), IsEmpty());
    qor.conversation().clientConnected(qor.nowMs());
    EXPECT_THAT(qor.wait(300), SizeIs(3));
}

TEST(Conversation, TheReferencePageShowsTheOriginals) {
    ConversationHarness qor;
    const auto value = [&] {
        const auto answer = qor.ask(CommandId::DirectCtrl, directCtrl(Scalar, 1));
        return DirectCtrlPayload::read(answer.at(0).payload).values.at(0);
    };
    qor.ask(CommandId::DirectCtrl, directCtrl(Scalar, 4, {7}));
    const auto selected =
        qor.ask(CommandId::EcuSegment, SegmentPayload{1, "ReferencePage", true}.write());
    EXPECT_EQ(selected.at(0).id, CommandId::EcuSegment);
    EXPECT_EQ(value(), 5);
    qor.ask(CommandId::EcuSegment, SegmentPayload{1, "WorkingPage", true}.write());
    EXPECT_EQ(value(), 7);
}

TEST(Conversation, AnOpenedModelIsToldAndKept) {
    ConversationHarness qor;
    EditPayload request;
    request.path = "c:\\m.sde";
    const auto records = qor.ask(CommandId::StartEdit, request.write());
    ASSERT_THAT(records, SizeIs(2));
    EXPECT_TRUE(isAcknowledgement(records[0], 1));
    const EditPayload information = EditPayload::read(records[1].payload);
    EXPECT_EQ(information.stage, EditPayload::Information);
    EXPECT_EQ(information.info.at("name"), "n");
    const auto hex = qor.ask(CommandId::GetHex);
    EXPECT_EQ(HexPayload::read(hex.at(0).payload).texts[3], "c:\\m.sde");
}

TEST(Conversation, ShutdownWithBothFlagsEndsTheProcessAfterTheAcknowledgement) {
    ConversationHarness qor;
    const auto answer = qor.ask(CommandId::Shutdown, ShutdownPayload{6}.write());
    EXPECT_TRUE(isAcknowledgement(answer.at(0), 1));
    ASSERT_TRUE(qor.conversation().exit());
    EXPECT_EQ(qor.conversation().exit()->code, 0);
    EXPECT_TRUE(qor.conversation().exit()->inOrder);
}

TEST(Conversation, ShutdownWithTheSecondFlagOnlyDisconnectsTheEcuAndStays) {
    ConversationHarness qor;
    qor.connectEcu();
    const auto answer = qor.ask(CommandId::Shutdown, ShutdownPayload{2}.write());
    EXPECT_TRUE(isAcknowledgement(answer.at(0), 1));
    EXPECT_FALSE(qor.conversation().exit());
    EXPECT_THAT(pushes(qor.ask(CommandId::KwpConnect, connectRequest(1, 2))), ElementsAre("-10:0"));
}

TEST(Conversation, NextMsIsWhenSomethingHappens) {
    ConversationHarness qor;
    EXPECT_EQ(qor.conversation().nextMs(), std::nullopt);
    qor.ask(CommandId::KwpConnect, connectRequest(1, 0));
    EXPECT_EQ(qor.conversation().nextMs(), qor.nowMs() + 60);
}

}  // namespace
}  // namespace simulator::test
