#include "client/ClientCommands.h"

#include <new>

#include "ClientFixture.h"
#include "trace/Trace.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// What QOR sends, handled by the client's own command classes.
class ClientCommands : public ClientTest {
protected:
    ClientCommands() {
        clock.msPerRead = 1;
        client();
    }

    /// The value that the client holds for an index, without asking QOR for it.
    std::vector<double> valuesOf(std::int32_t index) {
        const std::string name = "Parameter " + std::to_string(index);
        qor.knows(name, index);
        common::Doubles values;
        client().getParamData(name, values, 0, false);
        return values.all();
    }
};

TEST_F(ClientCommands, ThereIsOnePrototypeOfEachInTheOrderOfRegistration) {
    std::vector<int> ids;
    for (const auto& prototype : client().prototypes())
        ids.push_back(dynamic_cast<const IExternalCommand&>(*prototype).getId());
    EXPECT_THAT(ids, ElementsAre(3, 6, 7, 9, 1, 10, 11, 12, 14, 15, 17, 18));
}

TEST_F(ClientCommands, APrototypeBuildsClientCommandsOfItsOwnClass) {
    for (const auto& prototype : client().prototypes()) {
        const auto& command = dynamic_cast<const ExternalCommand&>(*prototype);
        const std::unique_ptr<IExternalCommand> made(command.createFromPayload(""));
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(typeid(*made), typeid(*prototype));
    }
}

TEST_F(ClientCommands, AReceptionLeavesThePrototypeAsItWas) {
    CommandGetParamInfo told;
    told.name = "Speed";
    EXPECT_TRUE(qor.send(told));
    const auto& prototype =
        dynamic_cast<const ClientCommandGetParamInfo&>(*client().prototypes().front());
    EXPECT_EQ(prototype.name, "");
}

TEST_F(ClientCommands, EveryRecordWithAPrototypeIsHandled) {
    EXPECT_TRUE(qor.send(CommandGetParamInfo()));
    EXPECT_TRUE(qor.send(CommandReceiveParamData()));
    EXPECT_TRUE(qor.send(CommandDirectCtrl()));
    EXPECT_TRUE(qor.send(CommandGetDTC()));
    EXPECT_TRUE(qor.send(CommandStartEdit()));
    EXPECT_TRUE(qor.send(CommandRedirectUI()));
    EXPECT_TRUE(qor.send(CommandGetHex()));
    EXPECT_TRUE(qor.send(CommandStaticParam()));
    EXPECT_TRUE(qor.send(CommandEcuSegment()));
    EXPECT_TRUE(qor.send(CommandExecKwp()));
    EXPECT_TRUE(qor.send(CommandCanBusData()));
    EXPECT_TRUE(qor.send(CommandReadTogether()));
}

TEST_F(ClientCommands, ARecordWithoutAPrototypeIsNobodys) {
    EXPECT_FALSE(qor.send(CommandShutdown()));
    EXPECT_FALSE(qor.send(CommandKwpConnect()));
    EXPECT_FALSE(qor.send(CommandSetParamList()));
}

TEST_F(ClientCommands, RecordsThatNobodyAsksForYetSendAndAnswerNothing) {
    CommandGetHex model;
    model.text1 = "a model";
    CommandGetDTC dtcs;
    dtcs.dtcs.resize(3);
    CommandCanBusData can;
    can.items.resize(2);
    CommandExecKwp kwp;
    kwp.data = std::string("\0\x7F", 2);
    EXPECT_TRUE(qor.send(model) && qor.send(dtcs) && qor.send(can) && qor.send(kwp));
    EXPECT_TRUE(qor.send(CommandEcuSegment()));
    EXPECT_THAT(qor.sent(), IsEmpty());
    EXPECT_THAT(qor.events, IsEmpty());
}

TEST_F(ClientCommands, AReadTogetherIsHandedOnParameterByParameter) {
    CommandReadTogether answer;
    answer.paramIndices = {4, 2};
    answer.values = {{1.0, 1.5}, {}};
    answer.names = {"not", "consulted", "at all"};
    EXPECT_TRUE(qor.send(answer));
    EXPECT_THAT(valuesOf(4), ElementsAre(1.0, 1.5));
    qor.forgetSent();
    EXPECT_THAT(valuesOf(2), IsEmpty());
    EXPECT_THAT(qor.sentIds(), ElementsAre(3));  // present though empty: QOR is not asked
}

TEST_F(ClientCommands, AReadTogetherOfThreeIndicesAndTwoVectorsYieldsTwoRecordsThenFalse) {
    CommandReadTogether answer;
    answer.paramIndices = {1, 2, 3};
    answer.values = {{1.0}, {2.0}};
    EXPECT_FALSE(qor.send(answer));
    EXPECT_THAT(valuesOf(1), ElementsAre(1.0));
    EXPECT_THAT(valuesOf(2), ElementsAre(2.0));
    qor.forgetSent();
    valuesOf(3);
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 7));
}

TEST_F(ClientCommands, AReadTogetherWithoutIndicesYieldsNothingAndTrue) {
    CommandReadTogether answer;
    answer.values = {{1.0}, {2.0}};
    EXPECT_TRUE(qor.send(answer));
    valuesOf(0);
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 7));
}

TEST_F(ClientCommands, SurplusVectorsOfAReadTogetherAreIgnored) {
    CommandReadTogether answer;
    answer.paramIndices = {1};
    answer.values = {{1.0}, {2.0}};
    EXPECT_TRUE(qor.send(answer));
    EXPECT_THAT(valuesOf(1), ElementsAre(1.0));
}

class NoReplyer final : public IExternalCommand::ICommandReplyer {
public:
    bool reply(std::unique_ptr<IExternalCommand>, unsigned int) override { return true; }
};

/// Its handlers give what the test says; each notes that it ran.
class BothWays final : public CommandShutdown, public IClientCommand {
public:
    bool onReply(IExternalCommand::ICommandReplyer* replyer,
                 ClientExternalOperating* client) override {
        ran += "onReply ";
        seenReplyer = replyer;
        seenClient = client;
        return result;
    }
    bool execute(IExternalCommand::ICommandReplyer*) override {
        ran += "execute ";
        return result;
    }

    bool result = true;
    std::string ran;
    IExternalCommand::ICommandReplyer* seenReplyer = nullptr;
    ClientExternalOperating* seenClient = nullptr;
};

/// What the transport hands over, whoever made it.
class HandleCommand : public ClientTest {
protected:
    bool handles(IExternalCommand& command) { return client().handleCommand(command, replyer); }

    NoReplyer replyer;
};

TEST_F(HandleCommand, AClientCommandGoesToItsReplyHandlerWithReplyerAndClient) {
    BothWays command;

    EXPECT_TRUE(handles(command));
    EXPECT_EQ(command.ran, "onReply ");
    EXPECT_EQ(command.seenReplyer, &replyer);
    EXPECT_EQ(command.seenClient, &client());

    command.result = false;
    EXPECT_FALSE(handles(command));
}

TEST_F(HandleCommand, AnyOtherCommandIsExecutedAndThatAcceptsByDefault) {
    CommandShutdown command;
    EXPECT_TRUE(handles(command));
}

TEST_F(HandleCommand, RunningOutOfMemoryIsNotHandled) {
    struct Hungry final : CommandShutdown {
        bool execute(IExternalCommand::ICommandReplyer*) override { throw std::bad_alloc(); }
    } command;
    EXPECT_FALSE(handles(command));
}

/// A message box that QOR wants shown.
class RedirectedBox : public ClientTest {
protected:
    RedirectedBox() {
        question.caption = "Caption %s";
        question.text = "Really?\nSure?";
        question.type = 4;  // yes and no
        pressButton = [this](const std::string& text, const std::string& caption,
                             unsigned int type) {
            qor.events.push_back("box " + caption + "|" + text + "|" + std::to_string(type));
            return 7u;  // "No"
        };
        client();
    }

    CommandRedirectUI question;
};

TEST_F(RedirectedBox, QorIsReleasedBeforeTheBoxOpensAndTheChoiceIsARequestOfItsOwn) {
    EXPECT_TRUE(qor.send(question));
    EXPECT_THAT(qor.events,
                ElementsAre("reply empty 0", "box Caption %s|Really?\nSure?|4", "send 10"));
}

TEST_F(RedirectedBox, TheChoiceNoGoesBackWithEmptyTexts) {
    qor.send(question);
    ASSERT_THAT(qor.sent(), SizeIs(1));
    const auto& choice = qor.last<CommandRedirectUI>();
    EXPECT_EQ(choice.result, 7u);
    EXPECT_EQ(choice.caption, "");
    EXPECT_EQ(choice.text, "");
    EXPECT_EQ(choice.type, 0u);
    EXPECT_FALSE(choice.isReply());
    EXPECT_NE(choice.requestId(), question.requestId());
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 2000u);
}

TEST_F(RedirectedBox, AChoiceThatQorDoesNotTakeIsDroppedAndNotRetried) {
    qor.acknowledges = false;
    EXPECT_FALSE(qor.send(question));
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(RedirectedBox, EachIsCountedAndTracedOnOneLineBeforeItOpens) {
    const std::string log = folder.pathOf("trace.log");
    tracelog::openTraceFile(log.c_str(), "w");
    std::vector<std::string> before;
    pressButton = [&](auto&&...) {
        before = linesOfFile(log);
        return 1u;
    };
    qor.send(question);
    qor.send(question);
    tracelog::openTraceFile("c:\\no such folder\\x.log", "w");
    ASSERT_THAT(before, SizeIs(2));
    unsigned int first = 0;
    ASSERT_EQ(std::sscanf(before[0].c_str(), "1\tMessage box %u", &first), 1);
    EXPECT_EQ(before[1], "1\tMessage box " + std::to_string(first + 1) +
                             " that QOR has asked for: 'Caption %s', 'Really? Sure?'");
}

TEST_F(RedirectedBox, ABoxThatCannotBeShownSendsItsZeroAsTheChoice) {
    pressButton = [](auto&&...) { return 0u; };
    EXPECT_TRUE(qor.send(question));
    EXPECT_EQ(qor.last<CommandRedirectUI>().result, 0u);
}

}  // namespace
