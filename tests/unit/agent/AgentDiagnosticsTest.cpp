#include "AgentFixture.h"
#include "support/FakeMonitor.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class AgentDiagnostics : public AgentTest {
protected:
    /// QOR answers every question of this class with `answer`.
    template <class Command>
    void answersWith(const typename Command::Payload& answer) {
        qor.on<Command>([this, answer](const Command&) {
            qor.send(Command(answer));
            return true;
        });
    }

    void connect() {
        succeeds(channel::Kind::connect,
                 std::make_shared<channel::CmdDataConnect>(QorControlFacade::EcuConnect(),
                                                           QorControlFacade::EcuConnect::Default));
        qor.forgetSent();
    }

    /// The results, which must not be carried by the request's own payload: as long as anybody
    /// holds that, the facade keeps the queue of a caller that gave up.
    template <class Data>
    std::shared_ptr<Data> read(channel::Kind kind, const std::shared_ptr<Data>& request) {
        const channel::CmdResponse answer = carryOut(kind, request);
        EXPECT_EQ(answer.result, 1u);
        EXPECT_NE(answer.data, request);
        return std::dynamic_pointer_cast<Data>(answer.data);
    }
};

TEST_F(AgentDiagnostics, TroubleCodesAreReadWithAnEmptyListAndTheOption) {
    answersWith<CommandGetDTC>({{{0x1234, 5, "a", "b", "c", "d"}}, false});
    const auto results =
        read(channel::Kind::getDtcByStatus, std::make_shared<channel::CmdDataDtcData>(500));
    EXPECT_TRUE(qor.last<CommandGetDTC>().option);
    EXPECT_THAT(qor.last<CommandGetDTC>().dtcs, IsEmpty());
    EXPECT_EQ(qor.sent().back().timeoutMs, 500u);
    ASSERT_EQ(results->dtcs.size(), 1u);
    EXPECT_EQ(results->dtcs[0].code, 0x1234u);
    EXPECT_EQ(results->dtcs[0].status, 5u);
    EXPECT_EQ(results->dtcs[0].text4, "d");
}

TEST_F(AgentDiagnostics, ClearingTroubleCodesRunsRoutineThreeFor400Ms) {
    EXPECT_TRUE(succeeds(channel::Kind::clearDtc, std::make_shared<channel::CmdDataDtc>()));
    EXPECT_EQ(qor.last<CommandEcuToolRoutine>().routine, 3u);
    EXPECT_EQ(qor.sent().back().timeoutMs, 400u);
}

TEST_F(AgentDiagnostics, AKwpRequestBeforeAnyConnectFailsWithoutSending) {
    const auto request =
        std::make_shared<channel::CmdDataKwp>(100u, QorControlFacade::KwpCommand{0x10, "x", 0});
    EXPECT_FALSE(succeeds(channel::Kind::sendKwpCommand, request));
    EXPECT_THAT(sentIds(), IsEmpty());
}

TEST_F(AgentDiagnostics, AKwpAnswerReplacesDataAndVerdictButNotTheService) {
    connect();
    answersWith<CommandExecKwp>({1, 0x50, std::string("\x01\x00", 2), 0, true});
    const auto results = read(
        channel::Kind::sendKwpCommand,
        std::make_shared<channel::CmdDataKwp>(700u, QorControlFacade::KwpCommand{0x10, "x", 0}));
    EXPECT_EQ(qor.last<CommandExecKwp>().channel, 1u);
    EXPECT_EQ(qor.last<CommandExecKwp>().timeoutMs, 700u);
    EXPECT_EQ(qor.sent().back().timeoutMs, 400u);
    EXPECT_EQ(results->service, 0x10u);
    EXPECT_EQ(results->data, std::string("\x01\x00", 2));
    EXPECT_EQ(results->failed, 1u);
}

TEST_F(AgentDiagnostics, CanIdentifiersGoOutWholeAndValuesComeBackSigned) {
    answersWith<CommandCanBusData>({{{0x100, -1}, {0x200, 7}}});
    QorControlFacade::CanBusData wanted;
    wanted.items = {{0x100, 3}, {0x200, 0}};
    const auto results =
        read(channel::Kind::getCanBusData, std::make_shared<channel::CmdCanBusData>(wanted, 300u));
    ASSERT_EQ(qor.last<CommandCanBusData>().items.size(), 2u);
    EXPECT_EQ(qor.last<CommandCanBusData>().items[0].value, 3);
    ASSERT_EQ(results->data.items.size(), 2u);
    EXPECT_EQ(results->data.items[0].value, -1);
}

TEST_F(AgentDiagnostics, ACanMessageKeepsTheOrderOfItsArguments) {
    EXPECT_TRUE(succeeds(channel::Kind::sendCanBusMsg,
                         std::make_shared<channel::CmdCanBusSend>(1u, 2u, "x", 700u)));
    EXPECT_EQ(qor.last<CommandCanBusSend>().firstNumber, 1u);
    EXPECT_EQ(qor.last<CommandCanBusSend>().secondNumber, 2u);
    EXPECT_EQ(qor.last<CommandCanBusSend>().data, "x");
    EXPECT_EQ(qor.sent().back().timeoutMs, 700u);
}

TEST_F(AgentDiagnostics, TheCanBusModeIsOneForTheAlternativeConnectionOnly) {
    using EcuConnect = QorControlFacade::EcuConnect;
    for (const auto& row : {std::pair{EcuConnect::Default, 0u},
                            {EcuConnect::SecurityAccess, 0u},
                            {EcuConnect::Alternative, 1u}}) {
        succeeds(channel::Kind::connectCanBus,
                 std::make_shared<channel::CmdCanBusConn>(
                     QorControlFacade::CanBusConnect{500000, false, true}, row.first));
        const auto& sent = qor.last<CommandCanBusConnect>();
        EXPECT_EQ(sent.busMode, row.second);
        EXPECT_EQ(sent.busParam, 500000u);
        EXPECT_FALSE(sent.firstFlag);
        EXPECT_TRUE(sent.secondFlag);
        EXPECT_EQ(qor.sent().back().timeoutMs, 10000u);
    }
}

TEST_F(AgentDiagnostics, AGroupIsReadInTheOrderOfItsNames) {
    qor.knows("a", 11);
    qor.knows("b", 12);
    answersWith<CommandReadTogether>({{12, 11}, {{2.0}, {}}, {}});
    const auto results = read(
        channel::Kind::getParamDataAtOnce,
        std::make_shared<channel::CmdParamDataAtOnce>(std::vector<std::string>{"a", "b"}, 500u));
    EXPECT_THAT(qor.last<CommandReadTogether>().paramIndices, ElementsAre(11u, 12u));
    EXPECT_THAT(qor.last<CommandReadTogether>().values, IsEmpty());
    EXPECT_THAT(results->values, ElementsAre(IsEmpty(), ElementsAre(2.0)));
}

TEST_F(AgentDiagnostics, ADynamicValueTravelsAsTextWithoutNumbers) {
    qor.knows("a", 11);
    const auto request = std::make_shared<channel::CmdDataParamData>("a", 100u);
    request->text = "3 %d";
    EXPECT_TRUE(succeeds(channel::Kind::setDynamicData, request));
    EXPECT_EQ(qor.last<CommandDirectCtrl>().operation, 5u);
    EXPECT_EQ(qor.last<CommandDirectCtrl>().name, "3 %d");
    EXPECT_THAT(qor.last<CommandDirectCtrl>().values, IsEmpty());
}

TEST_F(AgentDiagnostics, DirectControlIsStartedAndStoppedByTheSameRecordButForItsOperation) {
    qor.knows("a", 11);
    const auto request = std::make_shared<channel::CmdDataParamData>("a", 100u);
    EXPECT_TRUE(succeeds(channel::Kind::startDirectCtrl, request));
    EXPECT_EQ(qor.last<CommandDirectCtrl>().operation, 2u);
    EXPECT_TRUE(succeeds(channel::Kind::stopDirectCtrl, request));
    EXPECT_EQ(qor.last<CommandDirectCtrl>().operation, 3u);
    EXPECT_EQ(qor.last<CommandDirectCtrl>().paramIndex, 11u);
    EXPECT_EQ(qor.last<CommandDirectCtrl>().name, "a");
}

TEST_F(AgentDiagnostics, ASegmentIsSelectedWithItsDefaultWord) {
    EXPECT_TRUE(succeeds(channel::Kind::setEcuSegment,
                         std::make_shared<channel::CmdDataSegment>("ReferencePage", true)));
    EXPECT_EQ(qor.last<CommandEcuSegment>().word, 1u);
    EXPECT_EQ(qor.last<CommandEcuSegment>().segment, "ReferencePage");
    EXPECT_TRUE(qor.last<CommandEcuSegment>().flag);
    EXPECT_EQ(qor.sent().back().timeoutMs, 10000u);
}

TEST_F(AgentDiagnostics, ASegmentNeedsNothingOfItsMonitor) {
    FakeMonitor monitor;
    monitor.cancelled = true;
    EXPECT_TRUE(succeeds(channel::Kind::setEcuSegment,
                         std::make_shared<channel::CmdDataSegment>("WorkingPage", false),
                         &monitor));
    EXPECT_EQ(monitor.polls + monitor.strayCalls, 0);
    EXPECT_THAT(monitor.reports, IsEmpty());
}

TEST_F(AgentDiagnostics, NoTroubleCodesAreAResultToo) {
    answersWith<CommandGetDTC>({});
    const auto results =
        read(channel::Kind::getDtcByStatus, std::make_shared<channel::CmdDataDtcData>(500u));
    EXPECT_THAT(results->dtcs, IsEmpty());
}

TEST_F(AgentDiagnostics, AKwpAnswerOfAnyLengthReplacesTheData) {
    connect();
    for (const std::string& told : {std::string(), std::string(1, '\0'), std::string(10000, 'x')}) {
        answersWith<CommandExecKwp>({1, 0x50, told, 0, false});
        const auto results = read(channel::Kind::sendKwpCommand,
                                  std::make_shared<channel::CmdDataKwp>(
                                      100u, QorControlFacade::KwpCommand{0x10, "xy", 1}));
        EXPECT_EQ(results->data, told);
        EXPECT_EQ(results->failed, 0u);
    }
}

TEST_F(AgentDiagnostics, AKwpRequestTakesTheProtocolOfTheLastConnect) {
    QorControlFacade::EcuConnect settings{};
    settings.protocol = 3;
    succeeds(channel::Kind::connect, std::make_shared<channel::CmdDataConnect>(
                                         settings, QorControlFacade::EcuConnect::Default));
    succeeds(channel::Kind::sendKwpCommand, std::make_shared<channel::CmdDataKwp>(
                                                100u, QorControlFacade::KwpCommand{0x10, "x", 0}));
    EXPECT_EQ(qor.last<CommandExecKwp>().channel, 3u);
}

TEST_F(AgentDiagnostics, AnEmptyGroupIsReadWithoutACommand) {
    const auto results =
        read(channel::Kind::getParamDataAtOnce,
             std::make_shared<channel::CmdParamDataAtOnce>(std::vector<std::string>(), 500u));
    EXPECT_THAT(results->values, IsEmpty());
    EXPECT_THAT(sentIds(), IsEmpty());
}

}  // namespace
