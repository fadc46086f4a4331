// The examples of the host guide do what the guide says: streams and the life of their queues.

#include <gmock/gmock.h>

#include "guide/Session.h"
#include "guide/Streams.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

namespace {

class GuideStreams : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    guide::ConnectWindow window;
    std::unique_ptr<guide::ValueQueue> values = std::make_unique<guide::ValueQueue>(1);

    bool startConnected() {
        return station.start() && guide::connectEcu(station.facade(), window).empty();
    }
    bool awaitSpeedAbove(double limit, unsigned patienceMs) {
        return guide::awaitAbove(station.facade(), "EngineSpeed", limit, patienceMs, &station.log);
    }
    /// Whether the host's own queue has a speed above it in time.
    bool ownQueueFlows() {
        guide::beginValues(station.facade(), "EngineSpeed", *values);
        guide::Values batch;
        return eventually(8000, [&] { return values->pop(batch, 200); });
    }
    /// Whether the codes' stream comes to this state in time.
    static bool awaitCodes(guide::CodeStream& stream, guide::Watched state, guide::Codes& list) {
        return eventually(8000, [&] { return guide::nextCodes(stream, 200, list) == state; });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, GuideStreams, everyTransport(), transportName);

TEST_P(GuideStreams, AMeasurementIsWatched) {
    ASSERT_TRUE(startConnected());
    EXPECT_TRUE(awaitSpeedAbove(1, 8000));
    EXPECT_FALSE(awaitSpeedAbove(100000, 300));
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("FAILED"))));
}

TEST_P(GuideStreams, AQueueOfTheHostsOwnIsFreedAfterTheStop) {
    ASSERT_TRUE(startConnected());
    EXPECT_TRUE(ownQueueFlows());
    EXPECT_TRUE(guide::endValues(station.facade(), values));
    EXPECT_EQ(nullptr, values);
}

TEST_P(GuideStreams, WithoutAnEcuNothingFlows) {
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(awaitSpeedAbove(1, 600));
}

TEST_P(GuideStreams, ValuesAreRepeatedUntilNewOnesCome) {
    ASSERT_TRUE(startConnected());
    guide::ValueQueue wide(4000);
    ASSERT_TRUE(station->startParamRead(&wide, {"EngineSpeed"}));
    guide::Values batch;
    ASSERT_TRUE(eventually(8000, [&] { return wide.pop(batch, 200); }));
    Sleep(1000);
    ASSERT_TRUE(station->stopParamRead(&wide));
    ASSERT_TRUE(station->pingQor(5000));
    unsigned batches = 1;
    while (wide.pop(batch, 0)) ++batches;
    // QOR sends five in this second.
    EXPECT_GE(batches, 50u);
}

TEST_P(GuideStreams, TroubleCodesAreWatchedUntilTheStop) {
    ASSERT_TRUE(startConnected());
    const auto codes = guide::watchCodes(station.facade(), &station.log);
    guide::Codes list;
    ASSERT_TRUE(awaitCodes(*codes, guide::Watched::codes, list));
    EXPECT_THAT(list, SizeIs(5));
    ASSERT_TRUE(station->clearDtc(2000));
    EXPECT_TRUE(awaitCodes(*codes, guide::Watched::noCodes, list));
    EXPECT_TRUE(guide::endCodes(*codes));
    EXPECT_EQ(nullptr, codes->queue());
}

TEST_P(GuideStreams, WithoutAnEcuFourPausesBringTheMarkOfFailure) {
    ASSERT_TRUE(station.start());
    const auto codes = guide::watchCodes(station.facade(), &station.log);
    guide::Codes list;
    EXPECT_TRUE(awaitCodes(*codes, guide::Watched::readingFails, list));
    EXPECT_TRUE(guide::endCodes(*codes));
}

TEST_P(GuideStreams, AfterARestartOfQorAStreamFlowsAgainOnceTheEcuIsConnected) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(ownQueueFlows());
    qor::killAll();
    // What the old QOR sent is fresh for three periods. A single pop may end early.
    guide::Values batch;
    EXPECT_TRUE(
        eventually(8000, [&] { return !values->pop(batch, 100) && !values->pop(batch, 700); }));
    station.restartQor();
    ASSERT_TRUE(station.awaitContact());
    ASSERT_EQ("", guide::connectEcu(station.facade(), window));
    EXPECT_TRUE(eventually(8000, [&] { return values->pop(batch, 100); }));
    EXPECT_TRUE(guide::endValues(station.facade(), values));
}

TEST_P(GuideStreams, AfterAQuickShutdownTheQueuesMayGo) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(ownQueueFlows());
    EXPECT_TRUE(guide::shutDown(station.facade()));
    values.reset();
}

TEST_P(GuideStreams, WhileQorIsGoneAQueueIsFreedByTheShutdownOnly) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(ownQueueFlows());
    qor::killAll();
    EXPECT_FALSE(guide::endValues(station.facade(), values));
    EXPECT_NE(nullptr, values);
    EXPECT_TRUE(guide::shutDown(station.facade()));
}

TEST_P(GuideStreams, AnAgentThatIsLetGoKeepsTheQueues) {
    station.script = R"({"rules":[{"match":{"id":16},"action":{"hangMs":12000}}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(ownQueueFlows());
    ASSERT_TRUE(station->connectCanBus({500000, true, false}, {}));
    EXPECT_FALSE(guide::endValues(station.facade(), values));
    EXPECT_FALSE(guide::shutDown(station.facade()));
    EXPECT_TRUE(station.traceHolds("2\tQOR Remote agent thread is still active, wait next 50 ms."));
    // The agent goes on alone, and ends when QOR comes to itself.
    EXPECT_TRUE(eventually(15000, [] { return qor::running().empty(); }));
    static_cast<void>(values.release());
}

TEST_P(GuideStreams, TheEndOfAFacadeEndsItsStreams) {
    station.writeSettings();
    auto qor =
        std::make_unique<QorControlFacade>(station.settingsPath, nullptr, 200, station.hostPath);
    ASSERT_TRUE(qor->pingQor(6000));
    ASSERT_EQ("", guide::connectEcu(*qor, window));
    guide::beginValues(*qor, "EngineSpeed", *values);
    guide::Values batch;
    ASSERT_TRUE(eventually(8000, [&] { return values->pop(batch, 200); }));
    guide::endAll(std::move(qor), std::move(values));
    EXPECT_TRUE(eventually(5000, [] { return qor::running().empty(); }));
}

}  // namespace
