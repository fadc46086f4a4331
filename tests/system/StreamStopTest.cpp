// A stream is stopped, whatever state it and QOR are in.

#include "QorProcesses.h"
#include "StreamingFixture.h"

using testing::ElementsAre;

namespace {

constexpr unsigned atOnceMs = 300;

class StreamStop : public StreamingTest {
protected:
    /// Stops the values and measures it.
    bool stopsAtOnce(bool expected = true) {
        bool stopped = !expected;
        const unsigned elapsedMs = elapsedMsOf([&] { stopped = station->stopParamRead(&values); });
        EXPECT_LE(elapsedMs, atOnceMs);
        return stopped == expected;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, StreamStop, everyTransport(), transportName);

TEST_P(StreamStop, OfAQueueThatWasNeverRegisteredSendsNothing) {
    ASSERT_TRUE(startConnected());
    const std::size_t records = station.wire().size();
    EXPECT_TRUE(stopsAtOnce());
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_THAT(station.requests(records), ElementsAre("Ping 0"));
}

TEST_P(StreamStop, BeforeTheEcuIsOnlineSendsNothing) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    const std::size_t records = station.wire().size();
    EXPECT_TRUE(stopsAtOnce());
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_THAT(station.requests(records), ElementsAre("Ping 0"));
    ASSERT_TRUE(station.connectEcu(periodMs));
    EXPECT_TRUE(hasDried());
}

TEST_P(StreamStop, RightAfterTheStartLeavesNothingBehindInTheQueue) {
    ASSERT_TRUE(startConnected());
    for (int i = 0; i < 20; ++i) {
        ParamQueue shortLived{2};
        EXPECT_TRUE(station->startParamRead(&shortLived, {"EngineSpeed"}));
        EXPECT_TRUE(station->stopParamRead(&shortLived));
        ASSERT_TRUE(station->pingQor(amply));  // from here on the queue may go
    }
    EXPECT_TRUE(streams({"EngineSpeed"}));
}

TEST_P(StreamStop, OfARunningStreamEndsItWithTheNextAnswer) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed"}));
    EXPECT_TRUE(stopsAtOnce());
    ASSERT_TRUE(station->pingQor(amply));
    values.clear();
    EXPECT_TRUE(hasDried());
    EXPECT_TRUE(awaitRequest("SetParamList"));
    EXPECT_TRUE(stopsAtOnce());  // there is nothing left to stop
}

TEST_P(StreamStop, WhileQorSaysNothingIsTakenAtOnceAndServedLater) {
    const std::string unheard = silence(GetParam(), 2500);
    station.script = R"({"rules":[{"match":{"id":9},"action":)" + unheard + "}]}";
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed"}));
    ASSERT_TRUE(station->startDtcRead(&codes, 2000, 60000));  // the agent waits for the answer
    ASSERT_TRUE(awaitRequest("GetDtc [] 1"));
    EXPECT_TRUE(stopsAtOnce());
    EXPECT_TRUE(station->stopDtcRead());
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_TRUE(hasDried());
    EXPECT_TRUE(awaitRequest("SetParamList"));
}

TEST_P(StreamStop, WhenQorIsGoneIsTakenAtOnceToo) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed"}));
    ASSERT_TRUE(station->startDtcRead(&codes, 100, 100));
    ASSERT_TRUE(awaitCodes(5));
    qor::killAll();
    EXPECT_TRUE(stopsAtOnce());
    EXPECT_TRUE(station->stopDtcRead());
    station.close();  // nobody answers any more: only now may the queues go
    EXPECT_TRUE(hasDried());
}

TEST_P(StreamStop, OfARunningStreamAfterTheShutdownIsAFailureOnce) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed"}));
    station->shutdown();
    EXPECT_TRUE(stopsAtOnce(false));
    EXPECT_TRUE(stopsAtOnce(true));
    EXPECT_FALSE(station->stopDtcRead());
}

TEST_P(StreamStop, OfTroubleCodesThatNeverRanIsNoFailure) {
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station->stopDtcRead());
    EXPECT_TRUE(station->stopDtcRead());
    EXPECT_TRUE(station->pingQor(amply));
}

}  // namespace
