// Opening a model and the CAN bus: posted, and that is all. (connect has a file of its own.)

#include "FacadeFixture.h"
#include "support/FakeMonitor.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using EcuConnect = QorControlFacade::EcuConnect;

class PostedOperations : public FacadeTest {
protected:
    /// The one request so far; an operation that waits for nothing may be ahead of the agent.
    Cmd posted() {
        while (agent.requests().empty()) Sleep(1);
        return agent.requests().at(0);
    }

    QorControlFacade::ModelDescription model{6, "m %s", 4, "h",
                                             5, "c",    6, {{"key", "value"}, {"", "%n"}}};
};

TEST_F(PostedOperations, OpeningAModelIsLoggedInTheTraceAndForTheHost) {
    start();
    EXPECT_TRUE(facade->openModel(model));
    EXPECT_THAT(trace(), ElementsAre("1\tOpening model = 'm %s', hex = 'h', csv = 'c'"));
    EXPECT_THAT(log.lines(), ElementsAre("info: OPEN-model(m %s): ['h' 'c']"));
}

TEST_F(PostedOperations, TheLinesOfAModelComeBeforeItsRequest) {
    const auto seen = watchFirstLine();
    start().openModel(model);
    EXPECT_EQ(seen->traced, 1u);
    EXPECT_EQ(seen->posted, 0u);
}

TEST_F(PostedOperations, AModelTravelsWholeAndWantsNoAnswer) {
    start().openModel(model);
    const Cmd request = posted();
    EXPECT_EQ(request.kind, channel::Kind{2u});
    EXPECT_EQ(request.replyQueue, nullptr);
    EXPECT_EQ(request.monitor, nullptr);
    const auto& sent = dynamic_cast<channel::CmdDataModel&>(*request.data).model;
    EXPECT_EQ(sent.modelType, 6u);
    EXPECT_EQ(sent.model, "m %s");
    EXPECT_EQ(sent.modelOption, 4u);
    EXPECT_EQ(sent.hex, "h");
    EXPECT_EQ(sent.hexOption, 5u);
    EXPECT_EQ(sent.csv, "c");
    EXPECT_EQ(sent.csvOption, 6u);
    EXPECT_EQ(sent.extra, model.extra);
}

TEST_F(PostedOperations, TheCanBusTravelsWholeAndWantsNoAnswer) {
    start();
    EXPECT_TRUE(facade->connectCanBus({500000, false, true}, EcuConnect::Alternative));
    const Cmd request = posted();
    EXPECT_EQ(request.kind, channel::Kind{21u});
    EXPECT_EQ(request.replyQueue, nullptr);
    EXPECT_EQ(request.monitor, nullptr);
    const auto& sent = dynamic_cast<channel::CmdCanBusConn&>(*request.data);
    EXPECT_EQ(sent.settings.busParam, 500000u);
    EXPECT_FALSE(sent.settings.firstFlag);
    EXPECT_TRUE(sent.settings.secondFlag);
    EXPECT_EQ(sent.type, EcuConnect::Alternative);
}

TEST_F(PostedOperations, TheCanBusWritesNoLine) {
    start().connectCanBus({500000, true, true}, EcuConnect::Default);
    posted();
    EXPECT_THAT(trace(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(PostedOperations, NeitherWaitsForAnAgentThatIsBusy) {
    std::atomic<bool> mayGoOn{false};
    agent.script().onRequest = [&](Channel&, const Cmd&) {
        while (!mayGoOn) Sleep(1);
    };
    start();
    EXPECT_TRUE(facade->openModel(model));
    EXPECT_TRUE(facade->connectCanBus({}, EcuConnect::Default));
    EXPECT_LE(agent.requests().size(), 1u);
    mayGoOn = true;
    while (agent.requests().size() < 2) Sleep(1);
}

TEST_F(PostedOperations, WithoutALogTheModelIsStillTraced) {
    facade = std::make_unique<QorControlFacade>("s", nullptr, 0u, hostPath);
    EXPECT_TRUE(facade->openModel(model));
    EXPECT_TRUE(facade->connectCanBus({}, EcuConnect::Default));
    EXPECT_THAT(trace(), SizeIs(1));
}

TEST_F(PostedOperations, AfterAShutdownBothFailWithoutALine) {
    start().shutdown();
    const auto lines = trace().size();
    EXPECT_FALSE(facade->openModel(model));
    EXPECT_FALSE(facade->connectCanBus({}, EcuConnect::Default));
    EXPECT_THAT(trace(), SizeIs(lines));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(agent.requests(), IsEmpty());
}

}  // namespace
