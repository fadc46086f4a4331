// The library with its true agent, client and transports before a faked QOR, and a host that calls
// everything at once.
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <string>
#include <vector>

#include "common/Clock.h"
#include "Crowd.h"
#include "facade/QorControlFacade.h"
#include "QorPeer.h"
#include "support/FakeMonitor.h"
#include "Way.h"

namespace {

using Values = std::vector<double>;
using ParamQueue = ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>>;
using DtcQueue = ThreadSafeQueue<std::vector<QorControlFacade::DtcDescription>>;

const char* const qorName = "qor";
const char* const otherName = "guest qor";
constexpr unsigned int patienceMs = 2000;
constexpr unsigned int periodMs = 20;

QorControlFacade::EcuConnect ecu() {
    return {1, 1, true, 10400, 125000, periodMs, ~0u, ~0u, 255, 255, 255, true, "", true};
}

/// Until the agent answers, at most 10 s.
bool awaitAgent(const QorControlFacade& facade) {
    for (int i = 0; i < 50; ++i)
        if (facade.pingQor(100)) return true;
    ADD_FAILURE() << "no answer";
    return false;
}

class AgentRace : public ::testing::TestWithParam<Way> {
protected:
    bool connects() {
        FakeMonitor monitor;
        return facade.connect(ecu(), QorControlFacade::EcuConnect::Default, &monitor) &&
               monitor.reports.empty();
    }

    std::string settings(const char* name) const { return settingsFor(GetParam(), name); }

    QorPeer qor{makeEnd(GetParam(), qorName)};
    QorControlFacade facade{settings(qorName), nullptr, periodMs, ""};
    std::atomic<bool> enough{false};
};

/// Registers and takes back a queue of its own, with names that all threads share, and one of
/// its own.
void streamParams(const QorControlFacade& facade, int thread, std::atomic<int>& batches) {
    ParamQueue queue(4);
    for (int round = 0; round < 15; ++round) {
        facade.startParamRead(&queue, {"Speed", "Torque", "Own" + std::to_string(thread)});
        std::vector<QorControlFacade::ParamValue> batch;
        for (int i = 0; i < 4; ++i)
            if (queue.pop(batch, 100)) ++batches;
        if (round % 3 == 0) facade.startParamRead(&queue, {"Torque"});
        facade.stopParamRead(&queue);
    }
    awaitAgent(facade);  // it may have been about to fill the queue
}

TEST_P(AgentRace, FourThreadsStreamTheSameValuesIntoQueuesOfTheirOwn) {
    ASSERT_TRUE(awaitAgent(facade));
    ASSERT_TRUE(connects());
    std::atomic<int> batches{0};
    Crowd crowd;
    crowd.add(4, [&](int thread) { streamParams(facade, thread, batches); });
    Crowd reader;  // of what the stream puts into the cache
    reader.add(1, [&](int) {
        Values values;
        while (!enough)
            if (!facade.getParamData("Speed", values, patienceMs)) common::sleepMs(1);
    });
    crowd.join();
    enough = true;
    reader.join();
    EXPECT_GT(batches, 100);
    facade.shutdown();
}

bool areAllTheSame(const Values& values) {
    for (const double value : values)
        if (value != values.front()) return false;
    return true;
}

TEST_P(AgentRace, ValuesThatAreReadWrittenAndStreamedAtOnceAreNeverPiecesOfTwo) {
    ASSERT_TRUE(awaitAgent(facade));
    ASSERT_TRUE(connects());
    ParamQueue streamed(4);
    facade.startParamRead(&streamed, {"Speed", "Torque"});
    std::atomic<int> good{0};
    std::atomic<int> torn{0};
    Crowd crowd;
    crowd.add(4, [&](int thread) {
        for (int i = 0; i < 60; ++i) {
            Values first, second, third;
            const char* const name = i % 3 == 0 ? "Map" : i % 3 == 1 ? "Speed" : "Own";
            if (!facade.getParamData(name, first, second, third, patienceMs)) continue;
            ++good;
            if (!areAllTheSame(first) || (i % 3 == 0 && (first != second || first != third)))
                ++torn;
            const double written = 1000.0 * thread + i;
            if (i % 5 == thread)
                facade.setParamData("Map", {written}, {written}, {written}, patienceMs);
        }
    });
    crowd.add(1, [&](int) {
        std::vector<QorControlFacade::ParamValue> batch;
        while (!enough) streamed.pop(batch, 5);
    });
    crowd.add(1, [&](int) {
        std::vector<Values> group;
        while (!enough)
            if (facade.getParamDataAtOnce({"Speed", "Map", "Own"}, group, patienceMs) &&
                (group.size() != 3 || group[0] != group[1] || group[0] != group[2]))
                ++torn;
    });
    for (int i = 0; i < 2000 && good < 200; ++i) common::sleepMs(1);
    enough = true;
    crowd.join();
    facade.stopParamRead(&streamed);
    awaitAgent(facade);
    EXPECT_GE(good, 200);
    EXPECT_EQ(torn, 0);
}

/// Everything that is no parameter, once.
void callTheRest(QorControlFacade& facade, DtcQueue& dtcs, int round) {
    facade.startDtcRead(&dtcs, 50, 5);
    std::vector<QorControlFacade::DtcDescription> codes;
    facade.getDtcByStatus(codes, patienceMs);
    dtcs.pop(codes, 50);
    facade.clearDtc(patienceMs);
    QorControlFacade::KwpCommand kwp{0x1A, std::string("\x80\0", 2), 0};
    facade.sendKwpCommand(kwp, patienceMs);
    QorControlFacade::CanBusData frames{{{1, 2}, {3, 4}}};
    facade.getCanBusData(frames, patienceMs);
    facade.connectCanBus({250000, true, false}, QorControlFacade::EcuConnect::Default);
    facade.sendCanBusMsg(1, 2, "text", patienceMs);
    facade.setEcuSegment(QorControlFacade::getEdcRamSegmentName(), round % 2 == 0, nullptr);
    facade.startDirectCtrl("Valve", patienceMs);
    facade.setDynamicData("Valve", "open", patienceMs);
    facade.stopDirectCtrl("Valve", patienceMs);
    wex::ParamDescription description;
    facade.getParamDescription("Speed", description);
    facade.stopDtcRead();
}

TEST_P(AgentRace, EveryOperationRunsBesideEveryOtherAndBesideAShutdown) {
    ASSERT_TRUE(awaitAgent(facade));
    // An agent that a slow machine makes the shutdown let go may use them to the end.
    static DtcQueue dtcs[3] = {DtcQueue(2), DtcQueue(2), DtcQueue(2)};
    std::atomic<int> rounds{0};
    Crowd crowd;
    crowd.add(3, [&](int thread) {
        for (int round = 0; !enough; ++round, ++rounds) callTheRest(facade, dtcs[thread], round);
    });
    crowd.add(1, [&](int) {
        FakeMonitor monitor;
        while (!enough) facade.connect(ecu(), QorControlFacade::EcuConnect::Default, &monitor);
    });
    crowd.add(1, [&](int) {
        while (!enough) {
            facade.isEcuOnline();
            facade.isConnecting();
            facade.getQorExecutablePath();
        }
    });
    for (int i = 0; i < 10000 && rounds < 20; ++i) common::sleepMs(1);
    EXPECT_GE(rounds, 20);
    EXPECT_GT(qor.questionsAnswered(), 0);
    facade.shutdown();
    EXPECT_FALSE(facade.pingQor(patienceMs));
    enough = true;
}

TEST_P(AgentRace, TheConnectionBreaksAgainAndAgainWhileHostsCall) {
    ASSERT_TRUE(awaitAgent(facade));
    std::atomic<int> good{0};
    Crowd crowd;
    crowd.add(3, [&](int) {
        Values values;
        while (!enough) good += facade.getParamData("Speed", values, 20) ? 1 : 0;
    });
    const int before = qor.connections();
    for (int i = 0; i < 5000 && (qor.connections() < before + 20 || good < 20); ++i) {
        if (i % 20 == 0) qor.hangUp();
        common::sleepMs(1);
    }
    enough = true;
    crowd.join();
    EXPECT_GE(qor.connections(), before + 20);
    EXPECT_GE(good, 20);
}

/// Reads a stream and notes the highest value, which is the newest: what is streamed is repeated
/// where nothing new has come.
void readStream(ParamQueue& queue, const std::atomic<bool>& enough, std::atomic<double>& newest) {
    std::vector<QorControlFacade::ParamValue> batch;
    while (!enough) {
        if (!queue.pop(batch, 5)) continue;
        for (const QorControlFacade::ParamValue& value : batch)
            if (value.values.at(0) > newest) newest = value.values.at(0);
    }
}

TEST_P(AgentRace, StreamsComeBackEachTimeQorHasGone) {
    ASSERT_TRUE(awaitAgent(facade));
    ASSERT_TRUE(connects());
    ParamQueue queues[3] = {ParamQueue(4), ParamQueue(4), ParamQueue(4)};
    std::atomic<double> newest[3] = {};
    for (ParamQueue& queue : queues) facade.startParamRead(&queue, {"Speed", "Torque"});
    Crowd crowd;
    crowd.add(3, [&](int thread) { readStream(queues[thread], enough, newest[thread]); });
    for (int round = 0; round < 5; ++round) {
        for (std::atomic<double>& value : newest) {
            const double before = value;
            for (int i = 0; i < 10000 && value <= before; ++i) common::sleepMs(1);
            EXPECT_GT(value, before) << round;
        }
        const int connections = qor.connections();
        qor.hangUp();
        for (int i = 0; i < 10000 && qor.connections() == connections; ++i) common::sleepMs(1);
        EXPECT_GT(qor.connections(), connections) << round;
        common::sleepMs(2 * periodMs);  // what had come before is passed on meanwhile
    }
    enough = true;
    crowd.join();
    facade.shutdown();
}

TEST_P(AgentRace, ConnectsAreCancelledAtEachMomentWhileOthersCall) {
    ASSERT_TRUE(awaitAgent(facade));
    // An agent that a slow machine makes the shutdown let go may use them to the end.
    static std::deque<FakeMonitor> monitors;
    qor.holdResults(true);
    Crowd crowd;
    crowd.add(2, [&](int) {
        Values values;
        while (!enough) facade.getParamData("Speed", values, 5);
    });
    for (int patience = 0; patience < 12; ++patience) {
        FakeMonitor& monitor = monitors.emplace_back();
        Crowd user;
        user.add(1, [&](int) {
            while (monitor.polls < patience) common::sleepMs(0);
            monitor.cancelled = true;
        });
        EXPECT_FALSE(facade.connect(ecu(), QorControlFacade::EcuConnect::Default, &monitor));
    }
    enough = true;
    crowd.join();
    facade.shutdown();
}

TEST_P(AgentRace, TwoFacadesOfOneProcessShareTheirTables) {
    QorPeer otherQor(makeEnd(GetParam(), otherName));
    QorControlFacade other(settings(otherName), nullptr, periodMs, "");
    ASSERT_TRUE(awaitAgent(facade));
    ASSERT_TRUE(awaitAgent(other));
    std::atomic<int> good{0};
    Crowd crowd;
    crowd.add(4, [&](int) {
        Values values;
        for (int i = 0; i < 40; ++i)
            good += (i % 2 == 0 ? facade : other).getParamData("Own", values, patienceMs) ? 1 : 0;
    });
    crowd.join();
    EXPECT_EQ(good, 160);
}

TEST_P(AgentRace, AnAgentThatWasLetGoEndsByItselfBesideTheNextFacade) {
    static FakeMonitor monitor;  // such an agent may use it to the end
    facade.shutdown();
    auto stuck = std::make_unique<QorControlFacade>(settings(qorName), nullptr, periodMs, "");
    ASSERT_TRUE(awaitAgent(*stuck));
    qor.holdResults(true);
    Crowd crowd;
    crowd.add(1, [&](int) {
        EXPECT_FALSE(stuck->connect(ecu(), QorControlFacade::EcuConnect::Default, &monitor));
    });
    while (monitor.polls == 0) common::sleepMs(1);
    std::thread ending([&] { stuck->shutdown(); });
    QorPeer otherQor(makeEnd(GetParam(), otherName));
    QorControlFacade next(settings(otherName), nullptr, periodMs, "");
    EXPECT_TRUE(awaitAgent(next));
    ending.join();
    crowd.join();
    stuck.reset();
    EXPECT_TRUE(qor.isConnected());
    qor.holdResults(false);
    for (int i = 0; i < 10000 && qor.isConnected(); ++i) next.pingQor(1);
    EXPECT_FALSE(qor.isConnected());
}

INSTANTIATE_TEST_SUITE_P(Over, AgentRace,
                         ::testing::Values(Way::tcp, Way::windows, Way::interruptedWindows),
                         ::testing::PrintToStringParamName());

}  // namespace
