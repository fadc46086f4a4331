#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Writing a text, and direct control.
class ControlOperations : public FacadeTest {
protected:
    Cmd request(std::size_t number = 0) { return agent.requests().at(number); }
    static const channel::CmdDataParamData& dataOf(const Cmd& request) {
        return dynamic_cast<channel::CmdDataParamData&>(*request.data);
    }
    void succeedAfter37Ms() {
        after(37, [](const Cmd& command) { ScriptedAgent::succeed(command); });
    }
};

TEST_F(ControlOperations, ADynamicWriteCarriesTheTextAndEmptyArrays) {
    succeedAlways();
    start();
    EXPECT_TRUE(facade->setDynamicData("Count", "6 %d", 500));
    EXPECT_EQ(request().kind, channel::Kind{24u});
    EXPECT_EQ(dataOf(request()).name, "Count");
    EXPECT_EQ(dataOf(request()).text, "6 %d");
    EXPECT_EQ(dataOf(request()).timeoutMs, 500u);
    EXPECT_EQ(FakeClock::tickOf(dataOf(request()).stamp), clock.now());
    EXPECT_THAT(dataOf(request()).values, IsEmpty());
    EXPECT_THAT(dataOf(request()).second, IsEmpty());
    EXPECT_THAT(dataOf(request()).third, IsEmpty());
}

TEST_F(ControlOperations, ADynamicWriteIsLoggedLikeAnyOtherButWithItsText) {
    succeedAfter37Ms();
    start();
    EXPECT_TRUE(facade->setDynamicData("Count", "6 %d", 500));
    EXPECT_THAT(trace(), ElementsAre("1\tOK on set: Count [6 %d], t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ControlOperations, ADynamicWriteLeavesTheValueCacheAlone) {
    succeedAlways(valuesOf({5.0}));
    start(60000);
    std::vector<double> values;
    ASSERT_TRUE(facade->getParamData("Count", values, 500));
    EXPECT_TRUE(facade->setDynamicData("Count", "6", 500));
    EXPECT_TRUE(facade->setDynamicData("Other", "6", 500));
    EXPECT_THAT(agent.channel()->values.all(), SizeIs(1));
    EXPECT_THAT(agent.channel()->values.all().at("Count").values, ElementsAre(5.0));
}

TEST_F(ControlOperations, DirectControlPostsTheNameAlone) {
    succeedAlways();
    start();
    EXPECT_TRUE(facade->startDirectCtrl("Fan", 500));
    EXPECT_TRUE(facade->stopDirectCtrl("Fan", 600));
    EXPECT_EQ(request(0).kind, channel::Kind{33u});
    EXPECT_EQ(request(1).kind, channel::Kind{34u});
    EXPECT_EQ(dataOf(request(0)).timeoutMs, 500u);
    EXPECT_EQ(dataOf(request(1)).timeoutMs, 600u);
    for (const std::size_t number : {0u, 1u}) {
        const Cmd posted = request(number);
        EXPECT_EQ(dataOf(posted).name, "Fan");
        EXPECT_EQ(dataOf(posted).text, "");
        EXPECT_THAT(dataOf(posted).values, IsEmpty());
    }
}

TEST_F(ControlOperations, EachDirectionOfDirectControlHasItsOwnLine) {
    succeedAfter37Ms();
    start();
    EXPECT_TRUE(facade->startDirectCtrl("Fan", 500));
    EXPECT_TRUE(facade->stopDirectCtrl("Fan", 500));
    EXPECT_THAT(trace(), ElementsAre("1\tOK on Start DirectCtrl: Fan , t: 37 ms",
                                     "1\tOK on Stop DirectCtrl: Fan , t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ControlOperations, TheTraceLineOfAFailureComesBeforeTheHostsLine) {
    failAlways();
    std::vector<std::size_t> tracedBefore;
    log.onLine = [&] { tracedBefore.push_back(trace().size()); };
    start();
    EXPECT_FALSE(facade->setDynamicData("Count", "6", 500));
    EXPECT_FALSE(facade->startDirectCtrl("Fan", 500));
    EXPECT_FALSE(facade->stopDirectCtrl("Fan", 500));
    EXPECT_THAT(tracedBefore, ElementsAre(1u, 2u, 3u));
}

TEST_F(ControlOperations, NamesAndTextsOfAnyKindTravelUnchangedAndAreNoFormats) {
    failAlways();
    start();
    const std::string texts[] = {"",
                                 "%s%n%d 100%",
                                 "a\r\nb",
                                 std::string(10000, 'x'),
                                 "\xE4\xF6\xFC\xFF",
                                 std::string("a\0b", 3)};
    for (const std::string& text : texts) {
        agent.forgetRequests();
        EXPECT_FALSE(facade->setDynamicData(text, text, 500));
        EXPECT_FALSE(facade->startDirectCtrl(text, 500));
        EXPECT_FALSE(facade->stopDirectCtrl(text, 500));
        for (const Cmd& posted : agent.requests()) EXPECT_EQ(dataOf(posted).name, text);
        EXPECT_EQ(dataOf(request()).text, text);
        EXPECT_THAT(log.lines().back(), ::testing::HasSubstr(text.c_str()));
    }
}

}  // namespace
