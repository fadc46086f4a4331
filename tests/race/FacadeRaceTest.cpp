// The facade before an agent that answers late, twice or never, and a host whose threads give up at
// any moment.
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <string>
#include <vector>

#include "Crowd.h"
#include "facade/QorControlFacade.h"
#include "qorcontrol/Outcome.h"
#include "support/FakeMonitor.h"
#include "UnreliableAgent.h"

namespace {

using Values = std::vector<double>;
using Channel = channel::Channel;
using ParamQueue = ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>>;

constexpr int threads = 4;
constexpr int rounds = 400;
/// The value of a parameter is the number that ends its name.
std::string nameOf(int number) {
    return "P" + std::to_string(number);
}

class FacadeRace : public ::testing::Test {
protected:
    UnreliableAgent agent;
    QorControlFacade facade{"settings", nullptr, 20, ""};
    std::atomic<bool> enough{false};
};

/// One call of each timed operation that takes no value.
void callTimedOperations(const QorControlFacade& facade, unsigned int timeoutMs) {
    facade.pingQor(timeoutMs);
    facade.clearDtc(timeoutMs);
    std::vector<QorControlFacade::DtcDescription> dtcs;
    facade.getDtcByStatus(dtcs, timeoutMs);
    QorControlFacade::KwpCommand kwp{1, "data", 0};
    facade.sendKwpCommand(kwp, timeoutMs);
    QorControlFacade::CanBusData frames{{{1, 2}}};
    facade.getCanBusData(frames, timeoutMs);
    facade.sendCanBusMsg(1, 2, "text", timeoutMs);
    facade.startDirectCtrl("Valve", timeoutMs);
    facade.setDynamicData("Valve", "1", timeoutMs);
    std::vector<Values> group;
    facade.getParamDataAtOnce({"a", "b"}, group, timeoutMs);
    qorcontrol::lastOutcome();
}

TEST_F(FacadeRace, ALateOrSecondAnswerNeverReachesALaterCall) {
    constexpr unsigned int timeoutsMs[] = {0, 1, 10, 2};
    constexpr int mostRounds = UnreliableAgent::numbers / threads;
    std::atomic<int> answered{0};
    std::atomic<int> givenUp{0};
    std::atomic<int> wrong{0};
    const auto isEnough = [&] { return answered > 200 && agent.secondAnswers() > 50; };
    Crowd crowd;
    crowd.add(threads, [&](int thread) {
        for (int i = 0; i < mostRounds && !isEnough(); ++i) {
            const int number = i * threads + thread;  // asked for once, so the cache never helps
            Values first, second, third;
            if (!facade.getParamData(nameOf(number), first, second, third, timeoutsMs[i % 4])) {
                agent.giveUp(number);
                ++givenUp;
                continue;
            }
            ++answered;
            const Values expected{static_cast<double>(number)};
            if (first != expected || second != expected || third != expected) ++wrong;
        }
    });
    crowd.join();
    EXPECT_TRUE(isEnough()) << answered << " answered, twice: " << agent.secondAnswers();
    EXPECT_GT(givenUp, 50);
    EXPECT_EQ(wrong, 0);
}

TEST_F(FacadeRace, AllTimedOperationsGiveUpAtAnyMoment) {
    // How many calls it takes until enough answers were late depends on the machine.
    for (int most = 0; most < 20 && agent.lateAnswers() <= 20; ++most) {
        Crowd crowd;
        crowd.add(threads, [&](int) {
            for (unsigned int i = 0; i < 40; ++i) callTimedOperations(facade, i % 4);
        });
        crowd.join();
    }
    EXPECT_GT(agent.lateAnswers(), 20);
}

TEST_F(FacadeRace, ThreadsThatHaveNeverCalledBeforeComeBesideOthersThatHave) {
    std::atomic<bool> open{false};
    Crowd crowd;
    crowd.add(40, [&](int) {
        while (!open.load(std::memory_order_relaxed)) common::sleepMs(0);
        for (int i = 0; i < 3; ++i) facade.pingQor(0);
    });
    open.store(true, std::memory_order_relaxed);
    crowd.join();
    agent.answersNever();  // else an answer may come before the call has looked at its clock
    EXPECT_FALSE(facade.pingQor(0));
}

TEST_F(FacadeRace, TheValueCacheIsReadAndWrittenByAll) {
    std::atomic<int> found{0};
    std::atomic<int> torn{0};
    Crowd crowd;
    crowd.add(threads, [&](int thread) {
        for (int i = 0; i < rounds || (found <= 20 && i < 20 * rounds); ++i) {
            const std::string name = nameOf(i % 3);
            const double written = thread * rounds + i;
            facade.setParamData(name, {written}, {written}, {written}, 2);
            Values first, second, third;
            if (!facade.getParamData(name, first, second, third, 2)) continue;
            ++found;
            if (first.size() != 1 || first != second || first != third) ++torn;
        }
    });
    crowd.join();
    EXPECT_GT(found, 20);
    EXPECT_EQ(torn, 0);
}

TEST_F(FacadeRace, TheStateIsAskedWhileTheAgentNotesIt) {
    std::atomic<int> online{0};
    Crowd crowd;
    crowd.add(threads, [&](int) {
        for (int i = 0; i < rounds; ++i) {
            online += facade.isEcuOnline() ? 1 : 0;
            facade.isConnecting();
            facade.getQorExecutablePath();
        }
    });
    crowd.add(1, [&](int) {
        const QorControlFacade::EcuConnect ecu{1, 1, true, 1, 1, 20, 1, 1, 1, 1, 1, true, "", true};
        for (int i = 0; i < 20; ++i)
            facade.connect(ecu, QorControlFacade::EcuConnect::Default, nullptr);
    });
    crowd.join();
    EXPECT_GT(online, 0);
}

TEST_F(FacadeRace, RegistrationsComeAndGoWhileTheAgentReadsThem) {
    ParamQueue shared(2);
    Crowd crowd;
    crowd.add(threads, [&](int thread) {
        ParamQueue own(2);
        std::vector<QorControlFacade::ParamValue> batch;
        for (int i = 0; i < rounds; ++i) {
            facade.startParamRead(&own, {nameOf(thread), nameOf(i)});
            facade.startParamRead(&shared, {nameOf(thread)});
            shared.pop(batch, 0);
            facade.stopParamRead(i % 2 == 0 ? &own : &shared);
        }
        facade.stopParamRead(&own);
    });
    crowd.join();
    facade.stopParamRead(&shared);
    EXPECT_GT(agent.registrationsSeen(), 0);
}

TEST_F(FacadeRace, TwoThreadsShutDownWhileFourCall) {
    std::atomic<int> calls{0};
    Crowd crowd;
    crowd.add(threads, [&](int) {
        Values values;
        for (int i = 0; !enough; ++i, ++calls) {
            callTimedOperations(facade, 1);
            facade.setEcuSegment("page", true, nullptr);
        }
    });
    while (calls < threads) common::sleepMs(1);
    Crowd owners;
    owners.add(2, [&](int) { facade.shutdown(); });
    owners.join();
    EXPECT_FALSE(facade.pingQor(1000));
    enough = true;
}

TEST(FacadeLifeRace, WaitingOperationsOutliveTheFacade) {
    UnreliableAgent agent;
    agent.answersNever();
    auto facade = std::make_unique<QorControlFacade>("settings", nullptr, 20, "");
    Crowd crowd;
    crowd.add(threads, [&](int) { EXPECT_FALSE(facade->pingQor(500)); });
    agent.awaitRequests(threads);
    facade.reset();
    crowd.join();
}

/// A host's log that keeps whoever writes a line waiting until the test lets it go on.
class SlowLog final : public EolLog {
public:
    void reserved1(const char*, ...) const override {}
    void info(const char*, ...) const override { wait(); }
    void error(const char*, ...) const override { wait(); }

    mutable std::atomic<bool> written{false};
    std::atomic<bool> mayGoOn{false};

private:
    void wait() const {
        written = true;
        while (!mayGoOn) common::sleepMs(1);
    }
};

TEST(FacadeLifeRace, AConnectOutlivesTheFacadeFromItsFirstLineOn) {
    UnreliableAgent agent;
    SlowLog log;
    auto facade = std::make_unique<QorControlFacade>("settings", &log, 20, "");
    QorControlFacade* const host = facade.get();
    Crowd crowd;
    crowd.add(1, [&](int) {
        FakeMonitor monitor;
        EXPECT_FALSE(host->connect({}, QorControlFacade::EcuConnect::Default, &monitor));
    });
    while (!log.written) common::sleepMs(1);
    facade.reset();
    log.mayGoOn = true;
    crowd.join();
}

}  // namespace
