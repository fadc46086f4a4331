#include "IdleFigures.h"

#include <atomic>
#include <functional>

#include "common/Pump.h"
#include "common/Thread.h"
#include "FacadeBench.h"
#include "KernelView.h"
#include "qorcontrol/ThreadSafeQueue.h"
#include "Samples.h"
#include "transport/SocketPump.h"

namespace {

constexpr unsigned int spanMs = 2000;
constexpr double idleAim = 1;     // beyond the rounds
constexpr double waitingAim = 5;  // the same

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

void measureOver(Transport transport, Work& idle, Work& waiting) {
    FacadeBench facade(transport, Answers::separate);
    idle.add(rest);
    waiting.add([&] { waitFor(facade); });
}

}  // namespace

void measureIdle(int rounds, Report& report) {
    Work floor, tcpIdle, tcpWaiting, windowIdle, windowWaiting;
    for (int round = 0; round < rounds; ++round) {
        {
            const RoundsFloor running;
            floor.add(rest);
        }
        measureOver(Transport::tcp, tcpIdle, tcpWaiting);
        measureOver(Transport::window, windowIdle, windowWaiting);
    }
    const char* const unit = "% of a core, with Wine's server";
    const double rounds1Ms = floor.share();
    report.addAmount("floor: two threads that look around every ms", unit, rounds1Ms);
    report.addAmount("idle, TCP", unit, tcpIdle.share(), rounds1Ms + idleAim);
    report.addAmount("idle, window", unit, windowIdle.share(), rounds1Ms + idleAim);
    report.addAmount("waiting for acknowledged data, TCP", unit, tcpWaiting.share(),
                     rounds1Ms + waitingAim);
    report.addAmount("waiting for acknowledged data, window", unit, windowWaiting.share(),
                     rounds1Ms + waitingAim);
}
