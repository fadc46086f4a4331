// Several host threads at once.

#include <gmock/gmock.h>

#include <thread>

#include "Station.h"
#include "Waiting.h"

namespace {

constexpr unsigned amply = 5000;
constexpr unsigned durationMs = 5000;

class Threads : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Over, Threads, everyTransport(), transportName);

/// One thread's work: nobody else writes its parameter, so what it reads must be what it wrote.
struct Worker {
    const char* name;
    double lowest;
    double step;
    unsigned rounds = 0;
    unsigned failures = 0;
    unsigned mixedUp = 0;

    void count(bool done) { failures += done ? 0u : 1u; }

    void oneRound(QorControlFacade& facade) {
        const double written = lowest + step * (rounds++ % 50);
        count(facade.setParamData(name, {written}, {}, {}, amply));
        std::vector<double> values;
        count(facade.getParamData(name, values, amply));
        if (values != std::vector<double>{written}) ++mixedUp;
        std::vector<std::vector<double>> group;
        count(facade.getParamDataAtOnce({name, "KnockRetard"}, group, amply));
        if (group.size() != 2 || group[0] != values) ++mixedUp;
        wex::ParamDescription description = {};
        count(facade.getParamDescription(name, description));
        if (description.text1 != name) ++mixedUp;
        count(facade.pingQor(amply));
    }

    void work(QorControlFacade& facade) {
        const ULONGLONG end = GetTickCount64() + durationMs;
        while (GetTickCount64() < end) oneRound(facade);
    }
};

TEST_P(Threads, FourHostThreadsWithMixedOperationsEachGetTheirOwnAnswers) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    Worker workers[] = {{"MaxEngineSpeed", 5000, 10},
                        {"MaxVehicleSpeed", 100, 1},
                        {"FanOnTemperature", 80, 0.5},
                        {"InjectorFlow", 100, 2}};
    std::vector<std::thread> threads;
    for (Worker& worker : workers) threads.emplace_back([&] { worker.work(station.facade()); });
    for (std::thread& thread : threads) thread.join();
    for (const Worker& worker : workers) {
        EXPECT_GT(worker.rounds, 5u) << worker.name;
        EXPECT_EQ(0u, worker.failures) << worker.name;
        EXPECT_EQ(0u, worker.mixedUp) << worker.name;
    }
}

TEST_P(Threads, AShutdownWaitsForTheOperationThatTheAgentIsIn) {
    station.script = R"({"rules":[{"match":{"id":12},"action":{"delayMs":1000}}]})";
    ASSERT_TRUE(station.start());
    std::vector<double> values;
    bool done = false;
    std::thread waiting([&] { done = station->getParamData("DwellTime", values, 5000); });
    Sleep(300);
    EXPECT_GE(elapsedMsOf([&] { station->shutdown(); }), 500u);
    waiting.join();
    EXPECT_TRUE(done);
    EXPECT_EQ(5u, values.size());
    EXPECT_FALSE(station->pingQor(100));
}

TEST_P(Threads, AStationThatIsShutDownLetsTheWaitingThreadsGo) {
    station.script = R"({"rules":[{"match":{"id":9},"action":{"answer":"silent"}}]})";
    ASSERT_TRUE(station.start());
    std::vector<QorControlFacade::DtcDescription> codes;
    bool done = true;
    std::thread waiting([&] { done = station->getDtcByStatus(codes, 1500); });
    Sleep(200);
    station->shutdown();
    waiting.join();
    EXPECT_FALSE(done);
}

}  // namespace
