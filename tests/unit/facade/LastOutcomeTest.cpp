#include "qorcontrol/Outcome.h"

#include <stdexcept>
#include <thread>

#include "facade/CauseTexts.h"
#include "FacadeFixture.h"
#include "qorcontrol/Waiting.h"

using channel::Kind;
using qorcontrol::Cause;
using qorcontrol::lastOutcome;
using qorcontrol::Outcome;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

using LastOutcome = FacadeTest;
using LastOutcomeInRealTime = RealTimeFacadeTest;

TEST_F(LastOutcome, OfWhatWorkedIsNoCauseAndNoText) {
    succeedAlways();
    ASSERT_TRUE(start().pingQor(100));
    const Outcome outcome = lastOutcome();
    EXPECT_EQ(outcome.cause, Cause::none);
    EXPECT_FALSE(outcome.mayBelongToEarlier);
    EXPECT_THAT(outcome.sentence, IsEmpty());
    EXPECT_THAT(outcome.check, IsEmpty());
}

TEST_F(LastOutcome, TellsTheTimeOfTheCall) {
    after(70, [](const Cmd& command) { ScriptedAgent::succeed(command); });
    ASSERT_TRUE(start().pingQor(100));
    EXPECT_EQ(lastOutcome().elapsedMs, 70u);
}

TEST_F(LastOutcome, IsWhatTheAgentAnswered) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        command.replyQueue->push(
            {channel::CmdResponse::failure, nullptr, {Cause::unknownName, "of this test", false}});
    };
    ASSERT_FALSE(start().pingQor(100));
    const Outcome outcome = lastOutcome();
    EXPECT_EQ(outcome.cause, Cause::unknownName);
    EXPECT_EQ(outcome.sentence, "QOR knows no parameter of that name: of this test.");
    EXPECT_THAT(outcome.check, HasSubstr("spelling"));
}

TEST_F(LastOutcome, TellsToCheckWhatTheAgentSaysInPlaceOfWhatTheCauseSays) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        command.replyQueue->push({channel::CmdResponse::failure,
                                  nullptr,
                                  {Cause::systemFailure, "of this test", false, "This."}});
    };
    ASSERT_FALSE(start().pingQor(100));
    EXPECT_EQ(lastOutcome().check, "This.");
}

TEST_F(LastOutcome, TellsOfASuccessThatItMayBelongToAnEarlierRequest) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        command.replyQueue->push({channel::CmdResponse::success, nullptr, {Cause::none, "", true}});
    };
    ASSERT_TRUE(start().pingQor(100));
    EXPECT_TRUE(lastOutcome().mayBelongToEarlier);
    EXPECT_EQ(lastOutcome().cause, Cause::none);
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        ScriptedAgent::succeed(command);
    };
    ASSERT_TRUE(facade->pingQor(100));
    EXPECT_FALSE(lastOutcome().mayBelongToEarlier);
}

TEST_F(LastOutcome, OfAnAnswerOfAnotherTypeIsABadAnswer) {
    succeedWith([] { return std::make_shared<channel::CmdDataPing>(1u); });
    std::vector<double> values;
    ASSERT_FALSE(start().getParamData("Speed", values, 100));
    EXPECT_EQ(lastOutcome().cause, Cause::badAnswer);
}

TEST_F(LastOutcome, AfterTheShutdownIsThatTheHostHasShutItDown) {
    start().shutdown();
    ASSERT_FALSE(facade->pingQor(100));
    EXPECT_EQ(lastOutcome().cause, Cause::agentEnded);
    EXPECT_THAT(lastOutcome().sentence, EndsWith(": the host has shut it down."));
    EXPECT_THAT(lastOutcome().check, HasSubstr("trace"));
}

TEST_F(LastOutcome, OfEveryWayToCallIsThatTheAgentHasEnded) {
    start().shutdown();
    std::vector<double> values;
    wex::ParamDescription description;
    QorControlFacade::KwpCommand kwp{};
    const std::function<bool()> calls[] = {
        [&] { return facade->getParamData("Speed", values, 100); },
        [&] { return facade->getParamDescription("Speed", description); },
        [&] { return facade->sendKwpCommand(kwp, 100); },
        [&] { return facade->connect({}, QorControlFacade::EcuConnect::Default, nullptr); },
        [&] { return facade->setEcuSegment("WorkingPage", false, nullptr); },
        [&] { return facade->openModel({}); },
        [&] { return qorcontrol::openModelAndWait(*facade, {}); },
        [&] { return facade->connectCanBus({}, QorControlFacade::EcuConnect::Default); },
        [&] {
            return qorcontrol::connectCanBusAndWait(*facade, {},
                                                    QorControlFacade::EcuConnect::Default);
        },
        [&] { return facade->startDtcRead(nullptr, 1, 1); },
        [&] { return facade->stopDtcRead(); },
    };
    for (const auto& call : calls) {
        facade->startParamRead(nullptr, {});  // which always works
        ASSERT_EQ(lastOutcome().cause, Cause::none);
        EXPECT_FALSE(call());
        EXPECT_EQ(lastOutcome().cause, Cause::agentEnded) << &call - calls;
    }
}

TEST_F(LastOutcome, OfAnAgentThatEndedByItselfSaysWhyIfItIsKnown) {
    agent.script().endsByItself = true;
    agent.script().atStart = [](Channel& channel) {
        channel.agent.noteEnd(Cause::agentEnded, "cannot read the file.\nFile: x.ini");
    };
    start();
    while (agent.channel()->agent.isOperating()) Sleep(1);
    ASSERT_FALSE(facade->pingQor(100));
    EXPECT_THAT(lastOutcome().sentence, EndsWith(": cannot read the file. File: x.ini."));
}

TEST_F(LastOutcome, IsNotTouchedByQuestionsThatAskNobody) {
    failAlways();
    ASSERT_FALSE(start().pingQor(100));
    const Cause cause = lastOutcome().cause;
    ASSERT_NE(cause, Cause::none);
    facade->isEcuOnline();
    facade->isConnecting();
    facade->shutdown();
    EXPECT_EQ(lastOutcome().cause, cause);
}

TEST_F(LastOutcomeInRealTime, BelongsToTheCallingThread) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        if (dynamic_cast<channel::CmdDataPing*>(command.data.get())->timeoutMs == 1001)
            ScriptedAgent::succeed(command);
        else
            ScriptedAgent::fail(command);
    };
    start();
    ASSERT_FALSE(facade->pingQor(1000));
    std::thread([&] {
        EXPECT_TRUE(facade->pingQor(1001));
        EXPECT_EQ(lastOutcome().cause, Cause::none);
    }).join();
    EXPECT_NE(lastOutcome().cause, Cause::none);
}

TEST_F(LastOutcome, OfAnOperationThatAnExceptionEndsIsOutOfMemory) {
    succeedAlways();
    log.onLine = [] { throw std::bad_alloc(); };
    QorControlFacade::KwpCommand kwp{};
    EXPECT_THROW(start().sendKwpCommand(kwp, 100), std::bad_alloc);
    EXPECT_EQ(lastOutcome().cause, Cause::outOfMemory);
    log.onLine = nullptr;
}

using WaitingForms = FacadeTest;

const QorControlFacade::ModelDescription someModel{1, "m.a2l", 0, "m.hex", 0, "m.csv", 0, {}};

TEST_F(WaitingForms, GiveTheAgentsAnswer) {
    succeedAlways();
    start();
    EXPECT_TRUE(qorcontrol::openModelAndWait(*facade, someModel));
    EXPECT_TRUE(qorcontrol::connectCanBusAndWait(*facade, {500000, true, false},
                                                 QorControlFacade::EcuConnect::Alternative));
    const std::vector<Cmd> requests = agent.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].kind, Kind::openModel);
    EXPECT_EQ(dynamic_cast<channel::CmdDataModel&>(*requests[0].data).model.hex, "m.hex");
    EXPECT_EQ(requests[1].kind, Kind::connectCanBus);
    EXPECT_EQ(dynamic_cast<channel::CmdCanBusConn&>(*requests[1].data).settings.busParam, 500000u);
}

TEST_F(WaitingForms, TellWhyItDidNotWork) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        command.replyQueue->push(
            {channel::CmdResponse::failure, nullptr, {Cause::refused, "", false}});
    };
    start();
    EXPECT_FALSE(qorcontrol::openModelAndWait(*facade, someModel));
    EXPECT_EQ(lastOutcome().cause, Cause::refused);
    EXPECT_FALSE(
        qorcontrol::connectCanBusAndWait(*facade, {}, QorControlFacade::EcuConnect::Default));
    EXPECT_EQ(lastOutcome().cause, Cause::refused);
}

TEST_F(WaitingForms, WriteTheLinesOfThoseThatOnlyPost) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        if (command.replyQueue != nullptr) ScriptedAgent::succeed(command);
    };
    start();
    ASSERT_TRUE(facade->openModel(someModel));
    const auto traceOfPost = trace();
    const auto logOfPost = log.lines();
    ASSERT_TRUE(qorcontrol::openModelAndWait(*facade, someModel));
    const auto traceOfBoth = trace();
    ASSERT_EQ(traceOfBoth.size(), 2 * traceOfPost.size());
    ASSERT_EQ(log.lines().size(), 2 * logOfPost.size());
    EXPECT_THAT(traceOfBoth.back(),
                EndsWith("Opening model = 'm.a2l', hex = 'm.hex', csv = 'm.csv'"));
    EXPECT_EQ(log.lines().back(), logOfPost.back());
}

TEST_F(WaitingForms, EndWithTheAgent) {
    agent.script().onRequest = [](Channel& channel, const Cmd&) {
        channel.agent.noteEnd(Cause::agentEnded, "of this test");
        channel.agent.noteFailure();
    };
    start();
    EXPECT_FALSE(qorcontrol::openModelAndWait(*facade, someModel));
    EXPECT_EQ(lastOutcome().cause, Cause::agentEnded);
    EXPECT_THAT(lastOutcome().sentence, EndsWith(": of this test."));
}

TEST(CauseTexts, ExistForEachCauseAndDiffer) {
    std::set<std::string> sentences;
    for (int number = 1; number <= static_cast<int>(Cause::wrongOrder); ++number) {
        const causetexts::Texts& texts = causetexts::of(static_cast<Cause>(number));
        EXPECT_EQ(static_cast<int>(texts.cause), number);
        EXPECT_THAT(texts.sentence, Not(EndsWith(".")));
        EXPECT_THAT(texts.check, EndsWith("."));
        sentences.insert(texts.sentence);
    }
    EXPECT_EQ(sentences.size(), static_cast<std::size_t>(Cause::wrongOrder));
    EXPECT_STREQ(causetexts::of(Cause::none).sentence, "");
    EXPECT_STREQ(causetexts::of(static_cast<Cause>(99)).sentence, "");
    EXPECT_STREQ(causetexts::of(static_cast<Cause>(-1)).sentence, "");
}

TEST(CauseTexts, AreOneSentenceWithWhatElseIsKnown) {
    EXPECT_EQ(causetexts::sentence(Cause::refused, ""), "QOR refused the request.");
    EXPECT_EQ(causetexts::sentence(Cause::refused, "a\r\nb. "), "QOR refused the request: a  b.");
    EXPECT_EQ(causetexts::sentence(Cause::none, "x"), "");
}

}  // namespace
