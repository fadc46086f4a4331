#include "FacadeFixture.h"
#include "qorcontrol/Outcome.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// The values last read or written, as the reads use them.
class ValueCache : public FacadeTest {
protected:
    ValueCache() {
        agent.script().onRequest = [this](Channel&, const Cmd& command) {
            auto answer = valuesOf({static_cast<double>(agent.requests().size())});
            answer->second = {2.0};
            answer->third = {3.0};
            ScriptedAgent::succeed(command, answer);
        };
    }

    std::vector<double> get(const std::string& name = "Speed") {
        std::vector<double> values;
        EXPECT_TRUE(facade->getParamData(name, values, 500));
        return values;
    }
};

TEST_F(ValueCache, ASecondReadWithinHalfThePeriodAsksNobodyAndWritesNoLine) {
    start(200);
    get();
    clock.advance(50);
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    EXPECT_TRUE(facade->getParamData("Speed", values, second, third, 0));
    EXPECT_THAT(values, ElementsAre(1.0));
    EXPECT_THAT(second, ElementsAre(2.0));
    EXPECT_THAT(third, ElementsAre(3.0));
    EXPECT_THAT(agent.requests(), SizeIs(1));
    EXPECT_THAT(trace(), SizeIs(1));
}

TEST_F(ValueCache, ServesWhatMayBelongToAnEarlierRequestWithThatMark) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        auto answer = valuesOf({1.0});
        command.replyQueue->push(
            {channel::CmdResponse::success, answer, {qorcontrol::Cause::none, "", true}});
    };
    start(200);
    get();
    EXPECT_TRUE(qorcontrol::lastOutcome().mayBelongToEarlier);
    get();
    EXPECT_TRUE(qorcontrol::lastOutcome().mayBelongToEarlier);
    EXPECT_THAT(agent.requests(), SizeIs(1));
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        ScriptedAgent::succeed(command);
    };
    ASSERT_TRUE(facade->setParamData("Speed", {2.0}, {}, {}, 500));
    get();
    EXPECT_FALSE(qorcontrol::lastOutcome().mayBelongToEarlier);
}

TEST_F(ValueCache, AReadAfterMoreThanHalfThePeriodAsksQor) {
    start(200);
    get();
    clock.advance(150);
    EXPECT_THAT(get(), ElementsAre(2.0));
}

TEST_F(ValueCache, AtExactlyHalfThePeriodQorIsAsked) {
    start(200);
    get();
    clock.advance(99);
    EXPECT_THAT(get(), ElementsAre(1.0));
    clock.advance(1);
    EXPECT_THAT(get(), ElementsAre(2.0));
}

TEST_F(ValueCache, TheLookIntoItBelongsToTheTimeOfTheCall) {
    start(200);
    get();
    clock.advance(1000);
    clock.msPerRead = 7;
    get();         // looks at the age of an entry, too
    get("Fresh");  // there is no entry
    clock.msPerRead = 0;
    const auto elapsedOf = [](const std::string& line) {
        return std::stoi(line.substr(line.rfind("t: ") + 3));
    };
    const auto lines = trace();
    EXPECT_EQ(elapsedOf(lines.at(1)) - elapsedOf(lines.at(2)), 7);
}

TEST_F(ValueCache, AValueCountsForAsLongAcrossTheWrapOfTheTickCount) {
    start(200);
    for (const std::uint32_t msBefore : {101u, 100u, 99u, 50u, 1u}) {
        SCOPED_TRACE(msBefore);
        const std::string name = "Speed" + std::to_string(msBefore);
        clock.advanceToBeforeWrap(msBefore);
        const std::vector<double> first = get(name);
        EXPECT_EQ(get(name), first);
        clock.advance(99);
        EXPECT_EQ(get(name), first);
        clock.advance(1);
        EXPECT_NE(get(name), first);
    }
}

TEST_F(ValueCache, ADayBehindTheWrapNothingFromBeforeItCounts) {
    for (const unsigned int period : {0u, 1u, 200u}) {
        SCOPED_TRACE(period);
        start(period);
        clock.advanceToBeforeWrap(1000);
        const std::vector<double> first = get();
        clock.advance(1000);
        const std::vector<double> second = get();
        EXPECT_NE(second, first);
        clock.advance(24 * 60 * 60 * 1000);
        EXPECT_NE(get(), second);
        facade.reset();
    }
}

TEST_F(ValueCache, HalfOfAnOddPeriodIsRoundedDown) {
    start(3);
    get();
    EXPECT_THAT(get(), ElementsAre(1.0));
    clock.advance(1);
    EXPECT_THAT(get(), ElementsAre(2.0));
}

TEST_F(ValueCache, WithAPeriodOf0Or1EveryReadAsksQor) {
    for (const unsigned int period : {0u, 1u}) {
        start(period);
        agent.forgetRequests();
        get();
        get();
        get();
        EXPECT_THAT(agent.requests(), SizeIs(3)) << period;
        facade.reset();
    }
}

TEST_F(ValueCache, TheAgeCountsFromTheAnswersRecord) {
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        clock.advance(1000);
        ScriptedAgent::succeed(command, valuesOf({1.0}));
    };
    start(200);
    get();
    get();
    EXPECT_THAT(agent.requests(), SizeIs(1));
}

TEST_F(ValueCache, AWriteIsReadBackWithoutAskingQor) {
    start(200);
    EXPECT_TRUE(facade->setParamData("Map", {10.0}, {20.0}, {30.0}, 500));
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    EXPECT_TRUE(facade->getParamData("Map", values, second, third, 500));
    EXPECT_THAT(values, ElementsAre(10.0));
    EXPECT_THAT(second, ElementsAre(20.0));
    EXPECT_THAT(third, ElementsAre(30.0));
    EXPECT_THAT(agent.requests(), SizeIs(1));
}

TEST_F(ValueCache, TheAgeOfAWriteCountsFromTheRequest) {
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        clock.advance(100);
        ScriptedAgent::succeed(command, valuesOf({1.0}));
    };
    start(200);
    facade->setParamData("Map", {10.0}, {}, {}, 500);
    EXPECT_THAT(get("Map"), ElementsAre(1.0));
}

TEST_F(ValueCache, AFailedWriteLeavesItAlone) {
    start(200);
    get();
    facade.reset();
    std::atomic<bool> fails{false};
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        if (fails)
            ScriptedAgent::fail(command);
        else
            ScriptedAgent::succeed(command, valuesOf({1.0}));
    };
    start(200);
    get();
    fails = true;
    EXPECT_FALSE(facade->setParamData("Speed", {99.0}, {}, {}, 500));
    EXPECT_THAT(get(), ElementsAre(1.0));
}

TEST_F(ValueCache, NamesAreComparedExactly) {
    start(200);
    get("Speed");
    get("speed");
    get("Speed ");
    EXPECT_THAT(agent.requests(), SizeIs(3));
}

TEST_F(ValueCache, AStreamedValueAnswersWithItsOneArray) {
    start(200);
    agent.channel()->values.store("Speed", {{5.0}, {}, {}, common::now()});
    std::vector<double> values;
    std::vector<double> second{1.0};
    std::vector<double> third{1.0};
    EXPECT_TRUE(facade->getParamData("Speed", values, second, third, 500));
    EXPECT_THAT(values, ElementsAre(5.0));
    EXPECT_THAT(second, IsEmpty());
    EXPECT_THAT(third, IsEmpty());
}

TEST_F(ValueCache, AnOldEntryServesAgainOnceThePeriodIsLonger) {
    start(200);
    get();
    clock.advance(150);
    { agent.channel()->values.setReadPeriod(1000); }
    EXPECT_THAT(get(), ElementsAre(1.0));
}

TEST_F(ValueCache, AStringIsServedToo) {
    start(200);
    facade->setParamData("Text", {65.0, 66.0}, {}, {}, 500);
    std::string text;
    EXPECT_TRUE(facade->getParamDataAsString("Text", text, 500));
    EXPECT_EQ(text, "AB");
    EXPECT_THAT(agent.requests(), SizeIs(1));
}

TEST_F(ValueCache, OneVectorForTwoOutputsIsFilledInOrder) {
    start(200);
    std::vector<double> values;
    std::vector<double> same;
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(facade->getParamData("Speed", values, same, same, 500));
        EXPECT_THAT(same, ElementsAre(3.0));
    }
}

}  // namespace
