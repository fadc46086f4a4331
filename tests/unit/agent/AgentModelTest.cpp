#include "AgentFixture.h"
#include "support/TempFolder.h"
#include "trace/Trace.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class AgentModel : public AgentTest {
protected:
    AgentModel() { tracelog::openTraceFile(folder.pathOf("agent.log").c_str(), "w"); }
    // So that the temporary folder can be deleted.
    ~AgentModel() override { tracelog::openTraceFile("c:\\no such folder\\x.log", "w"); }

    bool open() {
        return succeeds(channel::Kind::openModel, std::make_shared<channel::CmdDataModel>(model));
    }
    const CommandStartEdit& sent() { return qor.last<CommandStartEdit>(); }
    std::vector<std::string> trace() const { return linesOfFile(folder.pathOf("agent.log")); }

    TempFolder folder;
    QorControlFacade::ModelDescription model{3, "m", 4, "h",
                                             5, "c", 6, {{"b", "2"}, {"a", "%s"}, {"", ""}}};
};

TEST_F(AgentModel, TheEcuIsLetGoAndTheWorkIsEndedBeforeAModelIsOpened) {
    EXPECT_TRUE(open());
    EXPECT_THAT(sentIds(), ElementsAre(2, 4, 1));
    EXPECT_EQ(qor.last<CommandKwpConnect>().protocol, 0u);
    EXPECT_EQ(qor.last<CommandKwpConnect>().mode, 0u);
    EXPECT_EQ(qor.last<CommandShutdown>().flags, 2u);
    const auto& all = qor.sent();
    ASSERT_THAT(all, SizeIs(3));
    EXPECT_EQ(all[0].timeoutMs, 3000u);
    EXPECT_EQ(all[1].timeoutMs, 5000u);
    EXPECT_EQ(all[2].timeoutMs, 90000u);
}

TEST_F(AgentModel, EveryFieldOfTheDescriptionIsSent) {
    open();
    EXPECT_EQ(sent().path, "m");
    EXPECT_EQ(sent().number, 4u);
    EXPECT_THAT(sent().files, ElementsAre("h"));
    EXPECT_THAT(sent().fileNumbers, ElementsAre(5u));
    EXPECT_THAT(sent().addFiles, ElementsAre("c"));
    EXPECT_THAT(sent().addFileNumbers, ElementsAre(6u));
    EXPECT_EQ(sent().info, model.extra);
}

TEST_F(AgentModel, TheTypesOneToFiveAreModesTheSixthIsTheSecondAndAllOthersAreTheFirst) {
    const std::pair<unsigned int, unsigned int> modes[] = {
        {0, 1}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 2}, {7, 1}, {0xFFFFFFFFu, 1}};
    for (const auto& mode : modes) {
        model.modelType = mode.first;
        open();
        EXPECT_EQ(sent().mode, mode.second) << "type " << mode.first;
    }
}

TEST_F(AgentModel, AnEmptyNameOfAFileSendsNeitherItNorItsNumber) {
    model.csv = "";
    open();
    EXPECT_THAT(sent().files, ElementsAre("h"));
    EXPECT_THAT(sent().addFiles, IsEmpty());
    EXPECT_THAT(sent().addFileNumbers, IsEmpty());
    model.hex = "";
    model.csv = "c";
    open();
    EXPECT_THAT(sent().files, IsEmpty());
    EXPECT_THAT(sent().fileNumbers, IsEmpty());
    EXPECT_THAT(sent().addFiles, ElementsAre("c"));
}

TEST_F(AgentModel, TheStageIsAlwaysSeven) {
    open();
    EXPECT_EQ(sent().stage, 7u);
    model = {};
    open();
    EXPECT_EQ(sent().stage, 7u);
    model = {1, "1", 1, "4", 1, "5", 1, {{"stage", "4"}}};
    open();
    EXPECT_EQ(sent().stage, 7u);
}

TEST_F(AgentModel, AShutdownThatQorDoesNotTakeIsTracedAndTheModelIsOpenedAllTheSame) {
    qor.on<CommandShutdown>([](const CommandShutdown&) { return false; });
    EXPECT_TRUE(open());
    EXPECT_THAT(trace(), Contains("3\tFailed to shutdown QOR"));
    EXPECT_THAT(sentIds(), ElementsAre(2, 4, 1));
}

TEST_F(AgentModel, AShutdownThatQorTakesIsNotTraced) {
    EXPECT_TRUE(open());
    EXPECT_THAT(trace(), Not(Contains("3\tFailed to shutdown QOR")));
}

TEST_F(AgentModel, ADisconnectThatQorDoesNotTakeKeepsNothingBack) {
    qor.on<CommandKwpConnect>([](const CommandKwpConnect&) { return false; });
    EXPECT_TRUE(open());
    EXPECT_THAT(sentIds(), ElementsAre(2, 4, 1));
}

TEST_F(AgentModel, AModelThatQorDoesNotTakeIsAFailure) {
    qor.on<CommandStartEdit>([](const CommandStartEdit&) { return false; });
    EXPECT_FALSE(open());
}

TEST_F(AgentModel, TheEcuIsOfflineBeforeAnythingIsSent) {
    qor.sendValue(-10, 1.0);
    agent.step();
    ASSERT_TRUE(channel->contact.isEcuOnline());
    bool wasOnline = true;
    qor.on<CommandKwpConnect>([&](const CommandKwpConnect&) {
        wasOnline = channel->contact.isEcuOnline();
        return true;
    });
    open();
    EXPECT_FALSE(wasOnline);
}

TEST_F(AgentModel, TheEcuStaysOfflineUntilQorReportsItAgain) {
    clock.msPerRead = 0;
    qor.sendValue(-10, 1.0);
    agent.step();
    ASSERT_TRUE(channel->contact.isEcuOnline());
    open();
    for (int round = 0; round < 10; ++round) {
        agent.step();  // also within 400 ms of the last question, whose answer was "online"
        EXPECT_FALSE(channel->contact.isEcuOnline()) << round;
        clock.advance(50);
    }
    qor.sendValue(-10, 1.0);
    agent.step();
    EXPECT_TRUE(channel->contact.isEcuOnline());
}

TEST_F(AgentModel, AfterItAKwpRequestNeedsANewConnect) {
    succeeds(channel::Kind::connect,
             std::make_shared<channel::CmdDataConnect>(QorControlFacade::EcuConnect(),
                                                       QorControlFacade::EcuConnect::Default));
    open();
    qor.forgetSent();
    EXPECT_FALSE(succeeds(
        channel::Kind::sendKwpCommand,
        std::make_shared<channel::CmdDataKwp>(100u, QorControlFacade::KwpCommand{0x10, "x", 0})));
    EXPECT_THAT(qor.all<CommandExecKwp>(), IsEmpty());
}

}  // namespace
