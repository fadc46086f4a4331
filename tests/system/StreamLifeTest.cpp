// Streams through what a day on a station brings: many threads, small queues, a QOR that hangs,
// dies and comes back.

#include <thread>

#include "Models.h"
#include "QorProcesses.h"
#include "StreamingFixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class StreamLife : public StreamingTest {
protected:
    /// One host thread with a queue of its own: starts, changes its names, stops, lets the queue
    /// go, again and again. How often; -1 after a fault.
    int changesRegistrations(const Names& first, const Names& second, unsigned forMs) {
        const ULONGLONG end = GetTickCount64() + forMs;
        int rounds = 0;
        while (GetTickCount64() < end && oneLife(first, second)) ++rounds;
        return GetTickCount64() < end ? -1 : rounds;
    }
    bool oneLife(const Names& first, const Names& second) {
        ParamQueue own{3};
        const bool flowed = streams(first, own) && streams(second, own);
        // Whatever happened: the queue goes, and the agent must have seen the stop.
        return station->stopParamRead(&own) && station->pingQor(amply) && flowed;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, StreamLife, everyTransport(), transportName);

TEST_P(StreamLife, FourHostThreadsChangeTheirRegistrationsWhileValuesFlow) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed", "OilPressure"}));
    const Names lists[4][2] = {{{"EngineSpeed"}, {"BatteryVoltage", "EngineSpeed"}},
                               {{"OilPressure"}, {"MaxEngineSpeed"}},
                               {{"BatteryVoltage"}, {"OilPressure", "EngineSpeed"}},
                               {{"MaxEngineSpeed", "EngineSpeed"}, {"OilPressure"}}};
    int rounds[4] = {};
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host)
        hosts.emplace_back([&, host] {
            rounds[host] = changesRegistrations(lists[host][0], lists[host][1], 3000);
        });
    for (std::thread& host : hosts) host.join();
    for (int host = 0; host < 4; ++host) EXPECT_GE(rounds[host], 2) << "thread " << host;
    values.clear();
    EXPECT_TRUE(awaitBatchOf({"EngineSpeed", "OilPressure"}));
}

TEST_P(StreamLife, AQueueOfOneSlotHoldsTheLatestValues) {
    ParamQueue single{1};
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed", "MaxEngineSpeed"}, single));
    for (int i = 1; i <= 5; ++i) {
        const double written = 6000 + i;
        ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {written}, {}, {}, amply));
        Sleep(3 * periodMs);
        // Batches go by unread, however slow the machine is: each but the first is an overflow.
        ASSERT_TRUE(eventually(amply, [&] { return single.overflowed(); }));
        Values batch;
        ASSERT_TRUE(single.pop(batch, 200));
        ASSERT_EQ(2u, batch.size());
        EXPECT_THAT(batch[1].values, ElementsAre(written));
    }
    station.close();
}

TEST_P(StreamLife, AQueueOfOneSlotHoldsTheLatestTroubleCodes) {
    ThreadSafeQueue<Codes> single{1};
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startDtcRead(&single, 1000, 20));
    ASSERT_TRUE(eventually(amply, [&] { return single.overflowed(); }));
    ASSERT_TRUE(station->clearDtc(2000));
    const std::size_t records = station.wire().size();
    ASSERT_TRUE(eventually(amply, [&] { return station.requests(records).size() >= 3; }));
    Codes list = {{}};
    ASSERT_TRUE(single.pop(list, 200));
    EXPECT_THAT(list, IsEmpty());
    station.close();
}

TEST_P(StreamLife, WhenQorHangsTheValuesAgeAndThenFlowAgainByThemselves) {
    station.script =
        R"({"rules":[{"match":{"id":9,"nth":1},"action":{"answer":"silent","hangMs":4000}}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed"}));
    Codes list;
    EXPECT_FALSE(station->getDtcByStatus(list, 300));  // what QOR hangs on
    EXPECT_TRUE(eventually(2000, [&] { return hasDried(); }));
    const std::size_t records = station.wire().size();
    EXPECT_TRUE(awaitBatchOf({"EngineSpeed"}));
    EXPECT_THAT(station.requests(records), Not(Contains("SetParamList 4")));
}

TEST_P(StreamLife, AfterQorDiedTheRightValuesFlowAgainOnceTheEcuIsConnected) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"MaxEngineSpeed", "EngineSpeed"}));
    qor::killAll();
    EXPECT_TRUE(eventually(amply, [&] { return hasDried(); }));
    station.settings.model = station.folder.write("other.json", modelInOppositeOrder());
    station.restartQor();
    ASSERT_TRUE(station.awaitContact());
    ASSERT_TRUE(station.connectEcu(periodMs));
    EXPECT_TRUE(awaitBatchOf({"MaxEngineSpeed", "EngineSpeed"}));
    Values batch;
    ASSERT_TRUE(eventually(amply, [&] { return values.pop(batch, 200) && batch.size() == 2; }));
    EXPECT_THAT(batch[0].values, ElementsAre(6500));
    EXPECT_TRUE(station->stopParamRead(&values));
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_TRUE(hasDried());
}

TEST_P(StreamLife, AfterQorDiedTroubleCodesFlowAgainByThemselvesWithTheReconnect) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startDtcRead(&codes, 300, 100));
    ASSERT_TRUE(awaitCodes(5));
    qor::killAll();
    EXPECT_TRUE(awaitCodes(1));  // the one empty entry
    station.restartQor();
    ASSERT_TRUE(station.awaitContact());
    ASSERT_TRUE(station.connectEcu(periodMs));
    EXPECT_TRUE(awaitCodes(5));
}

TEST_P(StreamLife, TheFacadeMayGoInMidStream) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(streams({"EngineSpeed", "OilPressure"}));
    ASSERT_TRUE(station->startDtcRead(&codes, 1000, 20));
    ASSERT_TRUE(awaitCodes(5));
    station.close();
    values.clear();
    codes.clear();
    Values batch;
    EXPECT_FALSE(values.pop(batch, 300));
}

}  // namespace
