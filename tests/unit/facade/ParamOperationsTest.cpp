#include <cmath>
#include <limits>

#include "facade/Text.h"
#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ParamOperations : public FacadeTest {
protected:
    bool get() { return facade->getParamData("Speed", values, second, third, 500); }
    const channel::CmdDataParamData& request(std::size_t number = 0) {
        last_ = agent.requests().at(number).data;
        return dynamic_cast<channel::CmdDataParamData&>(*last_);
    }

    std::vector<double> values{7.0};
    std::vector<double> second{8.0};
    std::vector<double> third{9.0};
    wex::ParamDescription description{"a", "b", "c", "d", "e", 5, true};

private:
    std::shared_ptr<channel::CmdData> last_;
};

TEST_F(ParamOperations, AReadPostsTheNameAndTheUndoubledTimeout) {
    succeedAlways(valuesOf({}));
    start();
    EXPECT_TRUE(get());
    EXPECT_EQ(agent.requests().at(0).kind, channel::Kind{5u});
    EXPECT_EQ(agent.requests().at(0).monitor, nullptr);
    EXPECT_EQ(request().name, "Speed");
    EXPECT_EQ(request().timeoutMs, 500u);
    EXPECT_EQ(FakeClock::tickOf(request().stamp), clock.now());
    EXPECT_THAT(request().values, IsEmpty());
}

TEST_F(ParamOperations, AReadGivesTheThreeArraysOfTheAnswerAndOneLine) {
    const auto answer = valuesOf({1.5, -2.0, 1e21});
    answer->second = {3.0};
    answer->third = {4.0, 5.0};
    after(37, [=](const Cmd& command) { ScriptedAgent::succeed(command, answer); });
    start();
    EXPECT_TRUE(get());
    EXPECT_THAT(values, ElementsAre(1.5, -2.0, 1e21));
    EXPECT_THAT(second, ElementsAre(3.0));
    EXPECT_THAT(third, ElementsAre(4.0, 5.0));
    ASSERT_THAT(trace(), SizeIs(1));
    EXPECT_THAT(trace().at(0),
                ::testing::MatchesRegex("1\tOK on get: Speed \\[1.5 -2 1e\\+0?21 \\], t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ParamOperations, AReadOfManyValuesIsALineThatIsCut) {
    succeedAlways(valuesOf(std::vector<double>(5000, 1.5)));
    start();
    EXPECT_TRUE(get());
    std::string expected = "1\tOK on get: Speed [";
    while (expected.size() < 2 + 2047) expected += "1.5 ";
    EXPECT_THAT(trace(), ElementsAre(expected.substr(0, 2 + 2047), ""));
}

TEST_F(ParamOperations, NoMoreValuesAreFormattedThanALineHolds) {
    const std::vector<double> many(100000, 1.25);
    const std::string shown = text::ofValues(many);
    EXPECT_GT(shown.size(), 2047u) << "or the line would not be cut as it must be";
    EXPECT_LT(shown.size(), 2047u + 100);
    EXPECT_EQ(shown.substr(0, 10), "1.25 1.25 ");
    EXPECT_EQ(text::ofValues({1, 2}), "1 2 ");
}

TEST_F(ParamOperations, TheValuesOfAnAnswerDoNotLiveOnInItsQueue) {
    const auto answer = valuesOf({1.0});
    answer->second = {2.0};
    answer->third = {3.0};
    after(0, [=](const Cmd& command) { ScriptedAgent::succeed(command, answer); });
    start();
    EXPECT_TRUE(get());
    EXPECT_THAT(answer->values, IsEmpty());
    EXPECT_THAT(answer->second, IsEmpty());
    EXPECT_THAT(answer->third, IsEmpty());
}

TEST_F(ParamOperations, AFailedReadIsTwoLinesOfTheTraceAndThenOneForTheHost) {
    after(37, ScriptedAgent::fail);
    std::size_t tracedBefore = 0;
    log.onLine = [&] { tracedBefore = trace().size(); };
    start();
    EXPECT_FALSE(get());
    EXPECT_THAT(trace(),
                ElementsAre("2\tQorControlFacade::getParamData() failed on param: Speed , t: 37 ms",
                            "1\tQorControlFacade::getParamData() isEcuOnline=false"));
    EXPECT_THAT(log.lines(), ElementsAre("error: FAILED GET-param(Speed), t: 37 ms"));
    EXPECT_EQ(tracedBefore, 2u);
    EXPECT_THAT(values, ElementsAre(7.0));
    EXPECT_THAT(second, ElementsAre(8.0));
    EXPECT_THAT(third, ElementsAre(9.0));
}

TEST_F(ParamOperations, AFailedReadTellsWhetherTheEcuIsOnline) {
    failAlways();
    start();
    agent.channel()->contact.note(common::now());
    get();
    EXPECT_EQ(trace().at(1), "1\tQorControlFacade::getParamData() isEcuOnline=true");
}

TEST_F(ParamOperations, AnAnswerOfAnotherTypeIsAFailure) {
    succeedAlways(std::make_shared<channel::CmdDataPing>(1u));
    start();
    EXPECT_FALSE(get());
    EXPECT_FALSE(facade->getParamDescription("Speed", description));
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(description.text1, "b");
}

TEST_F(ParamOperations, AnAnswerWithoutPayloadMeansTheRequestsOwn) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        dynamic_cast<channel::CmdDataParamData&>(*command.data).values = {6.0};
        ScriptedAgent::succeed(command);
    };
    start();
    EXPECT_TRUE(get());
    EXPECT_THAT(values, ElementsAre(6.0));
    EXPECT_THAT(second, IsEmpty());
}

TEST_F(ParamOperations, TheFormForOneArrayWritesTheSameLines) {
    succeedAlways(valuesOf({1.0}));
    start();
    EXPECT_TRUE(facade->getParamData("Speed", values, 500));
    EXPECT_THAT(values, ElementsAre(1.0));
    EXPECT_THAT(trace(), ElementsAre("1\tOK on get: Speed [1 ], t: 0 ms"));
}

TEST_F(ParamOperations, AStringIsTheTruncatedLowByteOfEachValue) {
    succeedAlways(valuesOf({72.9, 105.2, -1.0}));
    start();
    std::string text = "old";
    EXPECT_TRUE(facade->getParamDataAsString("Text", text, 500));
    EXPECT_EQ(text, "Hi\xFF");
}

TEST_F(ParamOperations, AStringOfNumbersThatAreNoCharactersIsStillDefined) {
    const double infinity = std::numeric_limits<double>::infinity();
    succeedAlways(valuesOf({std::nan(""), infinity, -infinity, 1e300, 256.0 + 65.0, 0.99, -0.99,
                            65536.0 * 65536.0 + 66.0}));
    start();
    std::string text;
    EXPECT_TRUE(facade->getParamDataAsString("Text", text, 500));
    EXPECT_EQ(text, std::string("\0\0\0\0A\0\0B", 8));
}

TEST_F(ParamOperations, AFailedReadLeavesTheStringAndAnEmptyOneEmptiesIt) {
    failAlways();
    start();
    std::string text = "old";
    EXPECT_FALSE(facade->getParamDataAsString("Text", text, 500));
    EXPECT_EQ(text, "old");
    facade.reset();
    succeedAlways(valuesOf({}));
    start();
    EXPECT_TRUE(facade->getParamDataAsString("Text", text, 500));
    EXPECT_EQ(text, "");
}

TEST_F(ParamOperations, AWritePostsTheThreeArraysAndWritesOneLine) {
    after(37, [](const Cmd& command) { ScriptedAgent::succeed(command); });
    start();
    EXPECT_TRUE(facade->setParamData("Map", {1.5, 2.0}, {3.0}, {4.0}, 500));
    EXPECT_EQ(agent.requests().at(0).kind, channel::Kind{6u});
    EXPECT_EQ(request().name, "Map");
    EXPECT_THAT(request().values, ElementsAre(1.5, 2.0));
    EXPECT_THAT(request().second, ElementsAre(3.0));
    EXPECT_THAT(request().third, ElementsAre(4.0));
    EXPECT_EQ(request().timeoutMs, 500u);
    EXPECT_THAT(trace(), ElementsAre("1\tOK on set: Map [1.5 2 ], t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ParamOperations, AFailedWriteIsOneLineOfTheTraceAndThenOneForTheHost) {
    after(37, ScriptedAgent::fail);
    std::size_t tracedBefore = 0;
    log.onLine = [&] { tracedBefore = trace().size(); };
    start();
    EXPECT_FALSE(facade->setParamData("Map", {1.0}, {}, {}, 500));
    EXPECT_THAT(trace(),
                ElementsAre("2\tQorControlFacade::setParamData() failed on param: Map , t: 37 ms"));
    EXPECT_THAT(log.lines(), ElementsAre("error: FAILED SET-param(Map), t: 37 ms"));
    EXPECT_EQ(tracedBefore, 1u);
}

TEST_F(ParamOperations, ADescriptionIsCopiedWholeAndLogsNothing) {
    const wex::ParamDescription told{"n", "1", "2", "3", "4", 0, false};
    succeedAlways(std::make_shared<channel::CmdDataParamInfo>("ignored", told));
    start();
    EXPECT_TRUE(facade->getParamDescription("Speed", description));
    EXPECT_EQ(description.name, "n");
    EXPECT_EQ(description.text1 + description.text2 + description.text3 + description.text4,
              "1234");
    EXPECT_EQ(description.value, 0u);
    EXPECT_FALSE(description.threeArrays);
    EXPECT_THAT(trace(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ParamOperations, ADescriptionIsAskedForUnderTheArgumentWithTheCallersRecord) {
    failAlways();
    start();
    facade->getParamDescription("Speed", description);
    const auto data = agent.requests().at(0).data;
    const auto& posted = dynamic_cast<channel::CmdDataParamInfo&>(*data);
    EXPECT_EQ(agent.requests().at(0).kind, channel::Kind{4u});
    EXPECT_EQ(posted.name, "Speed");
    EXPECT_EQ(posted.description.name, "Speed");
    EXPECT_EQ(posted.description.text1, "b");
    EXPECT_EQ(posted.description.value, 5u);
}

TEST_F(ParamOperations, AFailedDescriptionKeepsTheNewNameAndTheOldRest) {
    after(37, ScriptedAgent::fail);
    start();
    EXPECT_FALSE(facade->getParamDescription("Speed", description));
    EXPECT_EQ(description.name, "Speed");
    EXPECT_EQ(description.text1 + description.text2 + description.text3 + description.text4,
              "bcde");
    EXPECT_EQ(description.value, 5u);
    EXPECT_THAT(trace(), ElementsAre("2\tQorControlFacade::getParamDescription() failed on param: "
                                     "Speed , t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ParamOperations, WithoutALogTheFailuresAreStillTraced) {
    failAlways();
    facade = std::make_unique<QorControlFacade>("s", nullptr, 0u, hostPath);
    EXPECT_FALSE(get());
    EXPECT_FALSE(facade->setParamData("Map", {}, {}, {}, 500));
    EXPECT_THAT(trace(), SizeIs(3));
}

TEST_F(ParamOperations, NamesOfAnyKindTravelUnchangedAndAreNoFormats) {
    failAlways();
    start();
    const std::string names[] = {"", "%s%n%d 100%", "a\r\nb", std::string(10000, 'x'),
                                 "\xE4\xF6\xFC\xFF"};
    for (const std::string& name : names) EXPECT_FALSE(facade->getParamData(name, values, 500));
    ASSERT_THAT(agent.requests(), SizeIs(5));
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(request(i).name, names[i]);
        EXPECT_EQ(log.lines().at(i), "error: FAILED GET-param(" + names[i] + "), t: 0 ms");
    }
    EXPECT_EQ(trace().at(2),
              "2\tQorControlFacade::getParamData() failed on param: %s%n%d 100% , t: 0 ms");
}

TEST_F(ParamOperations, SpecialNumbersAndManyOfThemTravelUnchanged) {
    std::vector<double> many(100000, 1.25);
    many[0] = std::nan("");
    many[1] = std::numeric_limits<double>::infinity();
    many[2] = -many[1];
    succeedAlways(valuesOf(many));
    start();
    EXPECT_TRUE(facade->setParamData("Speed", many, {}, {}, 500));
    EXPECT_EQ(request().values.size(), many.size());
    EXPECT_TRUE(std::isnan(request().values.front()));
    EXPECT_TRUE(get());
    ASSERT_EQ(values.size(), many.size());
    EXPECT_TRUE(std::isnan(values[0]));
    EXPECT_TRUE(std::equal(values.begin() + 1, values.end(), many.begin() + 1));
}

}  // namespace
