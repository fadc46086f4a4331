#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

#include "TestSupport.h"

namespace simulator::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string ruleFor(const std::string& match, const std::string& action) {
    return "{'rules': [{'match': " + match + ", 'action': " + action + "}]}";
}

std::string nameRequest(const std::string& name) {
    ParamInfoPayload request;
    request.name = name;
    return request.write();
}

TEST(ConversationFaults, ASilentRequestIsNotCarriedOutEither) {
    ConversationHarness qor(ruleFor("{'id': 4}", "{'answer': 'silent'}"));
    EXPECT_THAT(qor.ask(CommandId::Shutdown, ShutdownPayload{6}.write()), IsEmpty());
    EXPECT_FALSE(qor.conversation().exit());
}

TEST(ConversationFaults, ARefusedWriteChangesNothing) {
    ConversationHarness qor(
        ruleFor("{'id': 7, 'operation': 4, 'name': 'Scalar'}", "{'answer': 'refuse'}"));
    const auto answer = qor.ask(CommandId::DirectCtrl, DirectCtrlPayload{0, 4, {7}, ""}.write());
    EXPECT_TRUE(isAcknowledgement(answer.at(0), 2));
    const auto read = qor.ask(CommandId::DirectCtrl, DirectCtrlPayload{0, 1, {}, ""}.write());
    EXPECT_THAT(DirectCtrlPayload::read(read.at(0).payload).values, ElementsAre(5));
}

TEST(ConversationFaults, ADelayedAnswerIsOvertakenByALaterOne) {
    ConversationHarness qor(ruleFor("{'id': 3}", "{'delayMs': 50}"));
    EXPECT_THAT(qor.ask(CommandId::GetParamInfo, nameRequest("Scalar")), IsEmpty());
    EXPECT_THAT(qor.ask(CommandId::Ping), SizeIs(1));
    EXPECT_THAT(qor.wait(49), IsEmpty());
    EXPECT_THAT(qor.wait(1), SizeIs(1));
}

TEST(ConversationFaults, ARuleChoosesTheStyleOfOneAnswer) {
    ConversationHarness qor(ruleFor("{'id': 3, 'nth': 1}", "{'answer': 'separate'}"));
    EXPECT_THAT(qor.ask(CommandId::GetParamInfo, nameRequest("Scalar")), SizeIs(2));
    EXPECT_THAT(qor.ask(CommandId::GetParamInfo, nameRequest("Scalar")), SizeIs(1));
}

TEST(ConversationFaults, AnAcknowledgementAloneMayHaveAnyStatus) {
    ConversationHarness qor(ruleFor("{'id': 3}", "{'answer': 'ackOnly', 'ackStatus': 0}"));
    const auto answer = qor.ask(CommandId::GetParamInfo, nameRequest("Scalar"));
    ASSERT_THAT(answer, SizeIs(1));
    EXPECT_TRUE(isAcknowledgement(answer[0], 0));
}

TEST(ConversationFaults, AnswersComeUnderAnotherNameWithAnotherTypeOrWithTooFewVectors) {
    ConversationHarness named(ruleFor("{}", "{'answer': 'wrongName'}"));
    const auto info = named.ask(CommandId::GetParamInfo, nameRequest("Scalar"));
    EXPECT_EQ(ParamInfoPayload::read(info.at(0).payload).name, "Scalar_other");

    ConversationHarness typed(ruleFor("{}", "{'answer': 'wrongType'}"));
    const auto other = typed.ask(CommandId::GetParamInfo, nameRequest("Scalar"));
    EXPECT_EQ(other.at(0).id, CommandId::GetHex);
    EXPECT_EQ(other.at(0).requestId, 77U);

    ConversationHarness fewer(ruleFor("{}", "{'answer': 'fewerVectors'}"));
    const auto together =
        fewer.ask(CommandId::ReadTogether, ReadTogetherPayload{{0, 1}, {}, {}}.write());
    EXPECT_THAT(ReadTogetherPayload::read(together.at(0).payload).values, SizeIs(1));
    EXPECT_THAT(ReadTogetherPayload::read(together.at(0).payload).indices, SizeIs(2));
}

TEST(ConversationFaults, AnAnswerMayComeSeveralTimes) {
    ConversationHarness qor(ruleFor("{}", "{'duplicates': 2}"));
    EXPECT_THAT(qor.ask(CommandId::Ping), SizeIs(3));
}

TEST(ConversationFaults, AnAnswerMayComeOnceMoreLater) {
    ConversationHarness qor(ruleFor("{'id': 3}", "{'duplicates': 1, 'duplicateAfterMs': 20}"));
    EXPECT_THAT(qor.ask(CommandId::GetParamInfo, nameRequest("Scalar")), SizeIs(1));
    EXPECT_THAT(qor.wait(19), IsEmpty());
    EXPECT_THAT(qor.wait(1), SizeIs(1));
}

TEST(ConversationFaults, AnAnswerMayGoBehindTheNextOne) {
    ConversationHarness qor(ruleFor("{'id': 3}", "{'afterNext': true}"));
    EXPECT_THAT(qor.ask(CommandId::GetParamInfo, nameRequest("Scalar")), IsEmpty());
    const auto answers = qor.ask(CommandId::Ping);
    ASSERT_THAT(answers, SizeIs(2));
    EXPECT_EQ(CommandId::Ping, answers[0].id);
    EXPECT_EQ(CommandId::GetParamInfo, answers[1].id);
    EXPECT_THAT(qor.ask(CommandId::Ping), SizeIs(1));
}

TEST(ConversationFaults, AnAnswerMayBeToAnotherQuestion) {
    ConversationHarness qor(ruleFor("{}", "{'answer': 'another'}"));
    const auto info = qor.ask(CommandId::GetParamInfo, nameRequest("Live"));
    EXPECT_EQ("Scalar", ParamInfoPayload::read(info.at(0).payload).name);
    const auto read = qor.ask(CommandId::DirectCtrl, DirectCtrlPayload{0, 1, {}, ""}.write());
    EXPECT_EQ(1u, DirectCtrlPayload::read(read.at(0).payload).index);
    qor.ask(CommandId::DirectCtrl, DirectCtrlPayload{0, 4, {7}, ""}.write());
    const auto last = qor.ask(CommandId::DirectCtrl, DirectCtrlPayload{6, 1, {}, ""}.write());
    EXPECT_THAT(DirectCtrlPayload::read(last.at(0).payload).values, ElementsAre(7));
}

TEST(ConversationFaults, AnAnswerMayNameTheRequestBefore) {
    ConversationHarness qor(ruleFor("{'id': 3}", "{'answer': 'foreignId'}"));
    qor.conversation().received({CommandId::Ping, false, 5, {}}, qor.nowMs());
    qor.pieces();
    EXPECT_EQ(5u, qor.ask(CommandId::GetParamInfo, nameRequest("Scalar")).at(0).requestId);
}

TEST(ConversationFaults, RawBytesComeInFrontOfTheAnswer) {
    ConversationHarness qor(ruleFor("{}", "{'rawHexBefore': 'FF'}"));
    qor.conversation().received({CommandId::Ping, false, 1, ""}, qor.nowMs());
    const auto pieces = qor.pieces();
    ASSERT_THAT(pieces, SizeIs(2));
    EXPECT_EQ(pieces[0].bytes, "\xFF");
    EXPECT_TRUE(pieces[1].record);
}

TEST(ConversationFaults, AConnectionClosesBeforeInsideOrAfterAnAnswer) {
    const auto piecesWith = [](const std::string& close) {
        ConversationHarness qor(ruleFor("{}", "{'close': '" + close + "'}"));
        qor.conversation().received({CommandId::Ping, false, 1, ""}, qor.nowMs());
        return qor.pieces();
    };
    for (const auto& [close, size] : {std::pair{"before", 0U}, {"mid", 8U}, {"after", 16U}}) {
        const auto pieces = piecesWith(close);
        ASSERT_THAT(pieces, SizeIs(1)) << close;
        EXPECT_EQ(pieces[0].bytes.size(), size) << close;
        EXPECT_TRUE(pieces[0].close) << close;
    }
}

TEST(ConversationFaults, CommandsOfItsOwnFollowAtTheirTime) {
    ConversationHarness qor(ruleFor("{'id': 0}", R"({'delayMs': 10, 'then': [
        {'afterMs': 20, 'messageBox': {'caption': 'c', 'text': 't', 'type': 4}},
        {'afterMs': 5, 'push': {'name': 'Array', 'value': 3.5}},
        {'afterMs': 5, 'record':
            {'id': 13, 'reply': true, 'requestId': 9, 'payloadHex': 'AA'}}]})"));
    qor.ask(CommandId::Ping);
    EXPECT_THAT(qor.wait(10), SizeIs(1));
    const auto own = qor.wait(5);
    ASSERT_THAT(own, SizeIs(2));
    EXPECT_EQ(ParamDataPayload::read(own[0].payload).index, 1);
    EXPECT_EQ(static_cast<int>(own[1].id), 13);
    EXPECT_EQ(own[1].requestId, 9U);
    const auto box = qor.wait(15);
    ASSERT_THAT(box, SizeIs(1));
    EXPECT_EQ(MessageBoxPayload::read(box[0].payload).text, "t");
    EXPECT_EQ(MessageBoxPayload::read(box[0].payload).type, 4U);
}

TEST(ConversationFaults, OneConnectMayFailWhileTheNextSucceeds) {
    ConversationHarness qor(ruleFor("{'id': 2, 'operation': 0, 'nth': 1}",
                                    "{'bootstrap': {'durationMs': 0, 'steps': 0, 'result': 5}}"));
    const auto failed = qor.ask(CommandId::KwpConnect, ConnectPayload().write());
    EXPECT_EQ(ParamDataPayload::read(failed.at(1).payload).value, 5.0);
    qor.ask(CommandId::KwpConnect, ConnectPayload().write());
    const auto reports = qor.wait(600);
    EXPECT_EQ(ParamDataPayload::read(reports.back().payload).value, -1.0);
}

TEST(ConversationFaults, OneParameterOrAllCanStall) {
    ConversationHarness qor(R"({'rules': [
        {'match': {'id': 0, 'nth': 1}, 'action': {'then': [{'stall': 'Scalar'}]}},
        {'match': {'id': 0, 'nth': 2}, 'action': {'then': [{'stall': '*'}]}},
        {'match': {'id': 0, 'nth': 3}, 'action': {'then': [{'resume': '*'}]}}]})");
    qor.connectEcu(10);
    qor.ask(CommandId::SetParamList, ParamListPayload{{0, 1}}.write());
    EXPECT_THAT(qor.wait(10), SizeIs(2));
    qor.ask(CommandId::Ping);
    EXPECT_THAT(qor.wait(10), SizeIs(1));
    qor.ask(CommandId::Ping);
    EXPECT_THAT(qor.wait(10), IsEmpty());
    qor.ask(CommandId::Ping);
    EXPECT_THAT(qor.wait(10), SizeIs(2));
}

TEST(ConversationFaults, TheEcuCanGoOfflineOfItself) {
    ConversationHarness qor("{'at': [{'since': 'connect', 'afterMs': 900, 'online': false}]}");
    qor.connectEcu();
    qor.wait(300);
    ConnectPayload query;
    query.mode = ConnectPayload::Query;
    const auto answer = qor.ask(CommandId::KwpConnect, query.write());
    EXPECT_EQ(ParamDataPayload::read(answer.at(1).payload).value, 0.0);
}

TEST(ConversationFaults, AScriptMayEndTheProcessAsInACrash) {
    ConversationHarness qor("{'at': [{'since': 'start', 'afterMs': 5, 'exit': 7}]}");
    qor.wait(5);
    ASSERT_TRUE(qor.conversation().exit());
    EXPECT_EQ(qor.conversation().exit()->code, 7);
    EXPECT_FALSE(qor.conversation().exit()->inOrder);
}

TEST(ConversationFaults, AnswersForALostClientAreDropped) {
    ConversationHarness qor(ruleFor("{}", "{'delayMs': 10}"));
    qor.ask(CommandId::Ping);
    qor.conversation().clientDisconnected();
    qor.conversation().clientConnected(qor.nowMs());
    EXPECT_THAT(qor.wait(20), IsEmpty());
}

TEST(ConversationFaults, RandomRequestsAreAllAnswered) {
    ConversationHarness qor;
    std::mt19937 random(3);
    for (int round = 0; round < 20000; ++round) {
        std::string payload(random() % 64, '\0');
        for (char& byte : payload) byte = static_cast<char>(random() % 3 == 0 ? random() % 8 : 0);
        const auto id = static_cast<CommandId>(random() % 21);
        if (id == CommandId::Shutdown) continue;
        const auto answer = qor.ask(id, payload);
        EXPECT_FALSE(answer.empty()) << commandName(id);
    }
}

TEST(ExportFiles, AFileHasTheSizeAskedForAndContentThatTellsItsPlace) {
    ExportFiles files(testing::TempDir() + "export-files-test-");
    const std::string path = files.create(1000);
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    file.close();
    EXPECT_EQ(std::remove(path.c_str()), 0);
    ASSERT_EQ(content.str().size(), 1000U);
    EXPECT_EQ(content.str()[999], ExportFiles::contentAt(999));
    EXPECT_NE(ExportFiles::contentAt(0), ExportFiles::contentAt(1));
    EXPECT_NE(files.create(0), path);
    EXPECT_EQ(std::remove((testing::TempDir() + "export-files-test-2.sde").c_str()), 0);
}

TEST(ExportFiles, AFolderThatIsMissingIsTold) {
    ExportFiles files("no-such-folder/x-");
    EXPECT_THROW(files.create(1), std::runtime_error);
}

}  // namespace
}  // namespace simulator::test
