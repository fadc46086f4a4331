#include "IdleFigures.h"

#include <fmt/core.h>

#include <atomic>
#include <functional>

#include "common/Pump.h"
#include "common/Thread.h"
#include "FacadeBench.h"
#include "KernelView.h"
#include "qorcontrol/ThreadSafeQueue.h"
#include "Samples.h"
#include "StreamBench.h"
#include "transport/SocketPump.h"

namespace {

constexpr unsigned int spanMs = 2000;
constexpr double idleAim = 1;     // beyond the rounds
constexpr double waitingAim = 5;  // the same
const char* const unit = "% of a core, with Wine's server";
constexpr StreamBench::Push allEvery100Ms{0, barepeer::streamed, 100000};

/// What an agent and a worker do once in a millisecond, and nothing else.
class RoundsFloor {
public:
    RoundsFloor() {
        agent_.start(lookForRequests, this);
        worker_.start(lookForBytes, this);
    }
    ~RoundsFloor() {
        stop_ = true;
        while (agent_.isRunning() || worker_.isRunning()) common::sleepMs(1);
    }
    RoundsFloor(const RoundsFloor&) = delete;
    RoundsFloor& operator=(const RoundsFloor&) = delete;

private:
    static unsigned int __stdcall lookForRequests(void* floor) {
        auto& self = *static_cast<RoundsFloor*>(floor);
        for (int item = 0; !self.stop_; self.requests_.pop(item, 1)) common::pumpCopyData();
        return 0;
    }
    static unsigned int __stdcall lookForBytes(void* floor) {
        auto& self = *static_cast<RoundsFloor*>(floor);
        while (!self.stop_) pumpSocketNotifications(&self.requests_.pushed());
        return 0;
    }

    ThreadSafeQueue<int> requests_{10};
    std::atomic<bool> stop_{false};
    common::Thread agent_;
    common::Thread worker_;
};

/// The work of a span, in per cent of a core.
struct Work {
    double percent = 0;
    double us = 0;

    void add(const std::function<void()>& span) {
        const KernelView wineServer = KernelView::ofWineServer();
        const double startUs = nowUs();
        const double before = ownWorkS() + wineServer.workS();
        span();
        percent += 100e6 * (ownWorkS() + wineServer.workS() - before);
        us += nowUs() - startUs;
    }
    double share() const { return percent / us; }
};

void rest() {
    common::sleepMs(spanMs);
}

void waitFor(FacadeBench& facade) {
    for (const double startUs = nowUs(); nowUs() - startUs < spanMs * 1e3;) facade.slowExchange();
}

/// What is done over one transport.
struct Works {
    Work idle, waiting, streaming;
};

void measureStreaming(Transport transport, Work& streaming) {
    StreamBench stream(transport);
    stream.startStream();
    stream.setPush(allEvery100Ms);
    const auto taker = stream.taker();
    streaming.add(rest);
}

void measureOver(Transport transport, Works& works) {
    {
        FacadeBench facade(transport, Answers::separate);
        works.idle.add(rest);
        works.waiting.add([&] { waitFor(facade); });
    }
    measureStreaming(transport, works.streaming);
}

void reportOver(Transport transport, const Works& works, double rounds1Ms, Report& report) {
    const auto add = [&](const char* what, const Work& work, double mostBound) {
        report.addAmount(fmt::format("{}, {}", what, nameOf(transport)), unit, work.share(),
                         mostBound);
    };
    add("idle", works.idle, rounds1Ms + idleAim);
    add("waiting for acknowledged data", works.waiting, rounds1Ms + waitingAim);
    add("12 values 10 times a second", works.streaming, 0);
}

}  // namespace

void measureIdle(int rounds, Report& report) {
    Work floor;
    Works tcp, window;
    for (int round = 0; round < rounds; ++round) {
        {
            const RoundsFloor running;
            floor.add(rest);
        }
        measureOver(Transport::tcp, tcp);
        measureOver(Transport::window, window);
    }
    const double rounds1Ms = floor.share();
    report.addAmount("floor: two threads that look around every ms", unit, rounds1Ms);
    reportOver(Transport::tcp, tcp, rounds1Ms, report);
    reportOver(Transport::window, window, rounds1Ms, report);
}
