// What all operations share that wait for an answer within a time.

#include "FacadeFixture.h"
#include "TimedOperationTable.h"

namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr unsigned int noLimit = 0xFFFFFFFFu;
constexpr unsigned int timeouts[] = {0, 1, 500, 0x80000000u, 0xFFFFFFFEu, noLimit};

std::string operationName(const ::testing::TestParamInfo<TimedOperation>& info) {
    return info.param.name;
}

std::shared_ptr<channel::CmdData> resultsOf(const TimedOperation& operation) {
    return operation.results ? operation.results() : nullptr;
}

/// On a clock of the test's.
class TimedOperations : public FacadeTest, public ::testing::WithParamInterface<TimedOperation> {
protected:
    bool call(unsigned int timeoutMs = 500) { return GetParam().call(*facade, timeoutMs); }
    void startWithoutLog() {
        facade = std::make_unique<QorControlFacade>("settings.ini", nullptr, 0u, hostPath);
        agent.channel();
    }
};

INSTANTIATE_TEST_SUITE_P(Of, TimedOperations, ::testing::ValuesIn(timedOperations()),
                         operationName);

TEST_P(TimedOperations, ARequestHasItsKindAQueueForTheAnswerAndNoMonitor) {
    succeedWith([operation = GetParam()] { return resultsOf(operation); });
    start();
    EXPECT_TRUE(call());
    ASSERT_THAT(agent.requests(), SizeIs(1));
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, GetParam().kind);
    EXPECT_NE(request.replyQueue, nullptr);
    EXPECT_EQ(request.monitor, nullptr);
}

TEST_P(TimedOperations, TheTimeoutTravelsUndoubled) {
    if (!GetParam().timeoutIn) return;
    succeedWith([operation = GetParam()] { return resultsOf(operation); });
    start();
    for (const unsigned int timeoutMs : timeouts) {
        agent.forgetRequests();
        call(timeoutMs);
        while (agent.requests().empty()) Sleep(1);
        EXPECT_EQ(GetParam().timeoutIn(*agent.requests().at(0).data), timeoutMs);
    }
}

TEST_P(TimedOperations, AFailureWritesItsLinesWithTheElapsedTime) {
    after(37, ScriptedAgent::fail);
    start();
    EXPECT_FALSE(call());
    EXPECT_THAT(trace(), ElementsAreArray(GetParam().failureTrace));
    EXPECT_THAT(log.lines(), ElementsAreArray(GetParam().failureLog));
}

TEST_P(TimedOperations, WithoutALogAFailureIsStillTraced) {
    after(37, ScriptedAgent::fail);
    startWithoutLog();
    EXPECT_FALSE(call());
    EXPECT_THAT(trace(), ElementsAreArray(GetParam().failureTrace));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(TimedOperations, WithoutALogASuccessIsASuccess) {
    succeedWith([operation = GetParam()] { return resultsOf(operation); });
    startWithoutLog();
    EXPECT_TRUE(call());
}

TEST_P(TimedOperations, ResultsOfAnotherTypeAreAFailure) {
    struct ForeignData : channel::CmdData {};
    agent.script().onRequest = [this](Channel&, const Cmd& command) {
        clock.advance(37);
        ScriptedAgent::succeed(command, std::make_shared<ForeignData>());
    };
    start();
    EXPECT_FALSE(call());
    EXPECT_THAT(trace(), ElementsAreArray(GetParam().failureTrace));
}

TEST_P(TimedOperations, AfterAShutdownItFailsAtOnceWithoutALine) {
    start();
    facade->shutdown();
    const auto lines = trace().size();
    EXPECT_FALSE(call(noLimit));
    EXPECT_EQ(trace().size(), lines);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(agent.requests(), IsEmpty());
}

TEST_P(TimedOperations, AnAnswerWithoutResultsMeansTheRequestsOwn) {
    succeedAlways();
    start();
    EXPECT_TRUE(call());
}

TEST_P(TimedOperations, OnlyTheResultOneIsSuccess) {
    std::atomic<std::uint32_t> result{0};
    agent.script().onRequest = [&](Channel&, const Cmd& command) {
        command.replyQueue->push({result, resultsOf(GetParam())});
    };
    start();
    for (const std::uint32_t told : {0u, 2u, 0x10001u, 0xFFFFFFFFu}) {
        result = told;
        EXPECT_FALSE(call()) << told;
    }
    result = 1;
    EXPECT_TRUE(call());
}

TEST_P(TimedOperations, AfterAShutdownItFailsWithoutALineAndPostsNothing) {
    succeedWith([operation = GetParam()] { return resultsOf(operation); });
    start().shutdown();
    const auto lines = trace().size();
    EXPECT_FALSE(call(noLimit));
    EXPECT_THAT(trace(), SizeIs(lines));
    EXPECT_THAT(log.lines(), IsEmpty());
    channel::ProtocolCmd posted;
    EXPECT_FALSE(agent.channel()->commandQueue.pop(posted, 0));
}

/// On the system's clock: how long they wait, and whose answers they take.
class TimedWaits : public RealTimeFacadeTest, public ::testing::WithParamInterface<TimedOperation> {
protected:
    using Waits = TimedOperation::Waits;

    bool call(unsigned int timeoutMs) { return GetParam().call(*facade, timeoutMs); }
    std::uint32_t msOfFailing(unsigned int timeoutMs) {
        const std::uint32_t begin = GetTickCount();
        EXPECT_FALSE(call(timeoutMs));
        return GetTickCount() - begin;
    }
    /// Whether the caller's time-out has a say in the wait.
    static bool isHeeded() { return GetParam().waits != Waits::threeSeconds; }

    static constexpr std::uint32_t tickStepMs = 20;
};

INSTANTIATE_TEST_SUITE_P(Of, TimedWaits, ::testing::ValuesIn(timedOperations()), operationName);

TEST_P(TimedWaits, SilenceIsGivenUpAfterTwiceTheTimeoutOrAfterTheOperationsOwnTime) {
    constexpr unsigned int timeoutMs = 150;
    const std::uint32_t waited = GetParam().waits == Waits::twice  ? 2 * timeoutMs
                                 : GetParam().waits == Waits::once ? timeoutMs
                                                                   : 3000;
    start();
    const std::uint32_t ms = msOfFailing(timeoutMs);
    EXPECT_GE(ms + tickStepMs, waited);
    EXPECT_LT(ms, waited + timeoutMs - tickStepMs);
}

TEST_P(TimedWaits, ATimeoutOf0Or1OrWhoseDoubleIs0GivesUpAtOnce) {
    if (!isHeeded()) return;
    start();
    EXPECT_LE(msOfFailing(0), 100u);
    EXPECT_LE(msOfFailing(1), 150u);
    if (GetParam().waits == Waits::twice) {
        EXPECT_LE(msOfFailing(0x80000000u), 100u);
    }
}

TEST_P(TimedWaits, TheLongestTimeoutsLastUntilTheAnswer) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        Sleep(30);
        ScriptedAgent::succeed(command, resultsOf(GetParam()));
    };
    start();
    EXPECT_TRUE(call(0xFFFFFFFEu));
    EXPECT_TRUE(call(noLimit));
    if (GetParam().waits == Waits::once) {
        EXPECT_TRUE(call(0x80000000u));  // is not doubled, so it does not wrap
    }
}

TEST_P(TimedWaits, AnAnswerToACallThatGaveUpReachesNoLaterOne) {
    std::vector<Cmd> taken;  // one call at a time, so only the agent writes
    agent.script().onRequest = [&taken](Channel&, const Cmd& command) {
        taken.push_back(command);
        const Cmd& givenUp = taken.front();
        if (taken.size() == 2) {
            ScriptedAgent::succeed(givenUp, resultsOf(GetParam()));
            Sleep(20);
            ScriptedAgent::fail(command);
        } else if (taken.size() == 3) {
            ScriptedAgent::fail(givenUp);
            Sleep(20);
            ScriptedAgent::succeed(command, resultsOf(GetParam()));
        }
    };
    start();
    EXPECT_FALSE(call(10));
    while (agent.requests().empty()) Sleep(1);
    ScriptedAgent::succeed(agent.requests().at(0), resultsOf(GetParam()));
    EXPECT_FALSE(call(1000)) << "took the late success for its own answer";
    EXPECT_TRUE(call(1000)) << "took the late failure for its own answer";
}

}  // namespace
