// Why a request has failed, on its way from the client to the answer.

#include "AgentFixture.h"
#include "facade/QorControlFacade.h"
#include "qorcontrol/Outcome.h"
#include "support/FakeMonitor.h"
#include "support/TempFolder.h"
#include "trace/Trace.h"
#include "unit/transport/WindowPeer.h"

using channel::Kind;
using qorcontrol::Cause;
using qorcontrol::lastOutcome;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

class AgentCauses : public AgentTest {
protected:
    Cause causeOf(Kind kind, std::shared_ptr<channel::CmdData> data) {
        const channel::CmdResponse answer = carryOut(kind, std::move(data));
        EXPECT_EQ(answer.result, channel::CmdResponse::failure);
        return answer.verdict.cause;
    }
    static std::shared_ptr<channel::CmdDataParamData> param(const std::string& name) {
        return std::make_shared<channel::CmdDataParamData>(name, 100u);
    }
    static std::shared_ptr<channel::CmdDataKwp> kwp() {
        return std::make_shared<channel::CmdDataKwp>(100u, QorControlFacade::KwpCommand{1, "", 0});
    }
};

TEST_F(AgentCauses, TravelInTheAnswer) {
    EXPECT_EQ(causeOf(Kind::sendKwpCommand, kwp()), Cause::kwpBeforeConnect);
    EXPECT_EQ(causeOf(Kind::getDtcByStatus, std::make_shared<channel::CmdDataDtcData>(100u)),
              Cause::noData);
    qor.knows("Nobody", protocol::ParamInfo::unknownIndex);
    EXPECT_EQ(causeOf(Kind::getParamData, param("Nobody")), Cause::unknownName);
    EXPECT_EQ(causeOf(Kind::setDynamicData, param("Nobody")), Cause::unknownName);
    qor.acknowledges = false;
    qor.failure = Delivery::refused;
    EXPECT_EQ(causeOf(Kind::clearDtc, std::make_shared<channel::CmdDataDtc>()), Cause::refused);
    qor.failure = Delivery::noConnection;
    EXPECT_EQ(causeOf(Kind::pingQor, std::make_shared<channel::CmdDataPing>(100u)),
              Cause::noConnection);
}

TEST_F(AgentCauses, OfAModelAreThoseOfItsOpeningAndNotOfWhatComesBefore) {
    qor.on<CommandShutdown>([](const CommandShutdown&) { return false; });
    const auto model =
        std::make_shared<channel::CmdDataModel>(QorControlFacade::ModelDescription{});
    EXPECT_EQ(carryOut(Kind::openModel, model).result, channel::CmdResponse::success);
    qor.on<CommandStartEdit>([](const CommandStartEdit&) { return false; });
    qor.failure = Delivery::refused;
    EXPECT_EQ(causeOf(Kind::openModel, model), Cause::refused);
}

TEST_F(AgentCauses, ASuccessTellsThatItMayBelongToAnEarlierRequest) {
    const auto request = std::make_shared<channel::CmdDataDtcData>(100u);
    EXPECT_EQ(causeOf(Kind::getDtcByStatus, request), Cause::noData);
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        clock.after(10, [this] { qor.send(CommandGetDTC()); });
        return true;
    });
    channel::CmdResponse answer = carryOut(Kind::getDtcByStatus, request);
    EXPECT_EQ(answer.result, channel::CmdResponse::success);
    EXPECT_TRUE(answer.verdict.mayBelongToEarlier);
    qor.send(CommandGetDTC());
    answer = carryOut(Kind::getDtcByStatus, request);
    EXPECT_EQ(answer.result, channel::CmdResponse::success);
    EXPECT_FALSE(answer.verdict.mayBelongToEarlier);
}

TEST_F(AgentCauses, AWriteIsNotMarkedForItsDescription) {
    EXPECT_EQ(causeOf(Kind::setParamData, param("Late")), Cause::noData);
    qor.knows("Late", 8);
    const channel::CmdResponse answer = carryOut(Kind::setParamData, param("Late"));
    EXPECT_EQ(answer.result, channel::CmdResponse::success);
    EXPECT_FALSE(answer.verdict.mayBelongToEarlier);
}

TEST_F(AgentCauses, AnAnswerThatNamesItsReadIsNotMarkedForTheDescription) {
    EXPECT_EQ(causeOf(Kind::getParamData, param("Late")), Cause::noData);
    qor.knows("Late", 8);
    qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl& request) {
        protocol::DirectCtrl value;
        value.paramIndex = 8;
        value.operation = protocol::DirectCtrl::readValues;
        value.values = {1.0};
        return qor.answer(request, CommandDirectCtrl(value));
    });
    const channel::CmdResponse answer = carryOut(Kind::getParamData, param("Late"));
    EXPECT_EQ(answer.result, channel::CmdResponse::success);
    EXPECT_FALSE(answer.verdict.mayBelongToEarlier);
}

TEST_F(AgentCauses, ADescriptionThatIsAskedForMayBelongToAnEarlierRequest) {
    const auto wanted =
        std::make_shared<channel::CmdDataParamInfo>("Late", wex::ParamDescription());
    EXPECT_EQ(causeOf(Kind::getParamDescription, wanted), Cause::noData);
    qor.knows("Late", 8);
    const channel::CmdResponse answer = carryOut(Kind::getParamDescription, wanted);
    EXPECT_EQ(answer.result, channel::CmdResponse::success);
    EXPECT_TRUE(answer.verdict.mayBelongToEarlier);
}

TEST_F(AgentCauses, ARequestThatIsTakenIsKnownToBe) {
    channel::ProtocolCmd command;
    command.kind = Kind::clearDtc;
    command.data = std::make_shared<channel::CmdDataDtc>();
    command.replyQueue = answers;
    command.number = channel->backlog.nextNumber();
    EXPECT_EQ(answers->present(), Cause::none);
    channel->commandQueue.push(command);
    EXPECT_FALSE(channel->backlog.hasPassed(0));
    agent.step();
    EXPECT_NE(answers->present(), Cause::none);
    EXPECT_TRUE(channel->backlog.hasPassed(0));
    EXPECT_FALSE(channel->backlog.hasPassed(1));
}

/// The agent thread as a facade starts it. No QOR is there.
class AgentEnds : public ::testing::Test {
protected:
    ~AgentEnds() override { tracelog::openTraceFile("c:\\no such folder\\x.log", "w"); }

    /// What an operation tells once there is no agent.
    static qorcontrol::Outcome outcomeWith(const std::string& settingsPath) {
        const QorControlFacade facade(settingsPath, nullptr, 0, "");
        for (int i = 0; i < 2000 && facade.startDtcRead(nullptr, 1, 1); ++i) Sleep(10);
        EXPECT_FALSE(facade.pingQor(100));
        return lastOutcome();
    }

    TempFolder folder;
};

TEST_F(AgentEnds, WithoutSettingsForAReasonThatNamesTheFile) {
    const std::string path = folder.pathOf("missing.ini");
    const qorcontrol::Outcome outcome = outcomeWith(path);
    EXPECT_EQ(outcome.cause, Cause::agentEnded);
    EXPECT_THAT(outcome.sentence, HasSubstr("settings file for QOR 'external operation mode' is "
                                            "not valid. File: " +
                                            path));
}

TEST_F(AgentEnds, WhenQorCannotBeStartedForThatReason) {
    const qorcontrol::Outcome outcome = outcomeWith(
        folder.write("qor.ini",
                     "[CommonSettings]\r\nUseTcp=true\r\nServerIp=127.0.0.1\r\nTcpPort=1\r\n"
                     "QORexecutable=c:\\no such folder\\qor.exe\r\n"));
    EXPECT_EQ(outcome.cause, Cause::agentEnded);
    EXPECT_THAT(
        outcome.sentence,
        HasSubstr("Fail to launch QOR external operating: c:\\no such folder\\qor.exe cannot "
                  "be started, code: 3"));
    EXPECT_THAT(outcome.check, HasSubstr("executable"));
}

TEST_F(AgentEnds, WhenQorCannotBeStartedForWhatTheLastAttemptToReachItHasMet) {
    std::promise<void> end;
    const auto task = [hangs = end.get_future().share()](const peer::Message&) {
        hangs.wait();
        return LRESULT{1};
    };
    peer::WindowThread server("AgentEnds.Hanging");
    server.onMessage(task);
    peer::send(server.handle(), "x", SMTO_NORMAL, 6000);  // only then the system calls it hung
    const qorcontrol::Outcome outcome = outcomeWith(
        folder.write("qor.ini",
                     "[CommonSettings]\r\nUseTcp=false\r\nClientPipeName=AgentEnds.Client\r\n"
                     "ServerPipeName=AgentEnds.Hanging\r\n"
                     "QORexecutable=c:\\no such folder\\qor.exe\r\n"));
    end.set_value();
    EXPECT_EQ(outcome.cause, Cause::agentEnded);
    EXPECT_THAT(outcome.sentence, HasSubstr("qor.exe cannot be started, code: 3"));
    EXPECT_THAT(outcome.sentence, EndsWith("; its window takes no messages at all."));
    EXPECT_THAT(outcome.check, HasSubstr("executable"));
}

}  // namespace
