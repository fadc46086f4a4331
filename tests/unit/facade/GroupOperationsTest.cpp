#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Names = std::vector<std::string>;
using Arrays = std::vector<std::vector<double>>;

class GetParamDataAtOnce : public FacadeTest {
protected:
    /// The agent answers with these arrays after 37 ms.
    void answers(const Arrays& told) {
        const auto results = std::make_shared<channel::CmdParamDataAtOnce>(Names(), 0u);
        results->values = told;
        after(37, [=](const Cmd& command) { ScriptedAgent::succeed(command, results); });
    }
    bool get(const Names& names) { return facade->getParamDataAtOnce(names, values, 500); }

    Arrays values{{7.0}};
};

TEST_F(GetParamDataAtOnce, TheRequestCarriesTheNamesInTheirOrderAndNoArrays) {
    answers({});
    start();
    get({"b", "a", "b"});
    const Cmd request = agent.requests().at(0);
    const auto& data = dynamic_cast<channel::CmdParamDataAtOnce&>(*request.data);
    EXPECT_EQ(request.kind, channel::Kind{23u});
    EXPECT_THAT(data.names, ElementsAre("b", "a", "b"));
    EXPECT_THAT(data.values, IsEmpty());
    EXPECT_EQ(data.timeoutMs, 500u);
}

TEST_F(GetParamDataAtOnce, TheLineShowsTheFirstValueOfEachArrayUnderItsName) {
    answers({{1.5, 2.0, 3.0}, {-0.25}, {1e21}});
    start();
    EXPECT_TRUE(get({"a", "b", "c"}));
    EXPECT_THAT(values,
                ElementsAre(ElementsAre(1.5, 2.0, 3.0), ElementsAre(-0.25), ElementsAre(1e21)));
    ASSERT_THAT(trace(), SizeIs(1));
    EXPECT_THAT(trace().at(0),
                ::testing::MatchesRegex("1\tOK on getAtOnce: data\\[a\\]=1.5 , data\\[b\\]=-0.25 , "
                                        "data\\[c\\]=1e\\+0?21 ,  , t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GetParamDataAtOnce, AnEmptyArrayIsShownAsSuchAndIsNoFailure) {
    answers({{1.0}, {}, {3.0}});
    start();
    EXPECT_TRUE(get({"a", "b", "c"}));
    EXPECT_THAT(values, ElementsAre(ElementsAre(1.0), IsEmpty(), ElementsAre(3.0)));
    EXPECT_THAT(trace(), ElementsAre("1\tOK on getAtOnce: data[a]=1 , data[b]=<empty> , data[c]=3 "
                                     ",  , t: 37 ms"));
}

TEST_F(GetParamDataAtOnce, NoNamesAndNoArraysAreASuccessWithAnEmptyText) {
    answers({});
    start();
    EXPECT_TRUE(get({}));
    EXPECT_THAT(values, IsEmpty());
    EXPECT_THAT(trace(), ElementsAre("1\tOK on getAtOnce:  , t: 37 ms"));
}

TEST_F(GetParamDataAtOnce, APieceOfTheLineIsCutAfter999Characters) {
    const std::string name(2000, 'n');
    answers({{1.0}, {}, {2.0}});
    start();
    EXPECT_TRUE(get({name, name, "c"}));
    const std::string piece = "data[" + name.substr(0, 994);
    ASSERT_EQ(piece.size(), 999u);
    // The trace cuts its own lines, but behind all of the first piece and most of the second.
    ASSERT_THAT(trace(), ::testing::Not(IsEmpty()));
    const std::string line = trace().at(0);
    const std::string start = "1\tOK on getAtOnce: ";
    EXPECT_EQ(line.substr(0, start.size() + 2 * 999), start + piece + piece);
    EXPECT_EQ(line.substr(start.size() + 2 * 999, 9), "data[c]=2");
}

TEST_F(GetParamDataAtOnce, ANameOf10000CharactersTravelsWholeAndDoesNoHarm) {
    const std::string name(10000, 'n');
    failAlways();
    start();
    EXPECT_FALSE(get({name, "%s%n", "a\r\nb", "", "\xE4\xFF"}));
    const Cmd request = agent.requests().at(0);
    EXPECT_THAT(dynamic_cast<channel::CmdParamDataAtOnce&>(*request.data).names,
                ElementsAre(name, "%s%n", "a\r\nb", "", "\xE4\xFF"));
    EXPECT_THAT(log.lines(), ElementsAre("error: FAILED GET_AT_ONCE-p(" + name +
                                         " , %s%n , a\r\nb ,  , \xE4\xFF , ), t: 0 ms"));
}

TEST_F(GetParamDataAtOnce, AFailureNamesThemAllInBothLogsAndLeavesTheArrays) {
    after(37, ScriptedAgent::fail);
    std::size_t tracedBefore = 0;
    log.onLine = [&] { tracedBefore = trace().size(); };
    start();
    EXPECT_FALSE(get({"a", "b"}));
    EXPECT_THAT(trace(), ElementsAre("2\tQorControlFacade::getParamDataAtOnce() failed on a , b ,  "
                                     ", t: 37 ms"));
    EXPECT_THAT(log.lines(), ElementsAre("error: FAILED GET_AT_ONCE-p(a , b , ), t: 37 ms"));
    EXPECT_EQ(tracedBefore, 1u);
    EXPECT_THAT(values, ElementsAre(ElementsAre(7.0)));
}

TEST_F(GetParamDataAtOnce, FewerArraysThanNamesAreHandedOnAsTheyAre) {
    answers({{1.0}});
    start();
    EXPECT_TRUE(get({"a", "b"}));
    EXPECT_THAT(values, ElementsAre(ElementsAre(1.0)));
    EXPECT_THAT(trace(), ElementsAre("1\tOK on getAtOnce: data[a]=1 ,  , t: 37 ms"));
}

TEST_F(GetParamDataAtOnce, ArraysBeyondTheNamesAreShownWithoutOne) {
    answers({{1.0}, {2.0}, {}});
    start();
    EXPECT_TRUE(get({"a"}));
    EXPECT_THAT(values, SizeIs(3));
    EXPECT_THAT(trace(), ElementsAre("1\tOK on getAtOnce: data[a]=1 , data[]=2 , data[]=<empty> , "
                                     " , t: 37 ms"));
}

TEST_F(GetParamDataAtOnce, TheValueCacheIsNeitherAskedNorFilled) {
    succeedAlways(valuesOf({1.0}));
    start(60000);
    std::vector<double> one;
    ASSERT_TRUE(facade->getParamData("a", one, 500));
    const auto stamp = agent.channel()->values.all().at("a").stamp;
    answers({{2.0}, {3.0}});
    EXPECT_TRUE(get({"a", "b"}));
    EXPECT_THAT(values.at(0), ElementsAre(2.0));
    EXPECT_THAT(agent.requests(), SizeIs(2));
    const auto& cache = agent.channel()->values.all();
    EXPECT_THAT(cache, SizeIs(1));
    EXPECT_THAT(cache.at("a").values, ElementsAre(1.0));
    EXPECT_EQ(cache.at("a").stamp, stamp);
}

TEST_F(GetParamDataAtOnce, ThousandsOfNamesAreServed) {
    Names names;
    Arrays told;
    for (int i = 0; i < 5000; ++i) {
        names.push_back("Parameter " + std::to_string(i));
        told.push_back({static_cast<double>(i)});
    }
    answers(told);
    start();
    EXPECT_TRUE(get(names));
    EXPECT_EQ(values, told);
}

}  // namespace
