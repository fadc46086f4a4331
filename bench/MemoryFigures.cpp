#include "MemoryFigures.h"

#include <fmt/core.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "BarePeer.h"
#include "HostLife.h"
#include "KernelView.h"
#include "PeerBench.h"
#include "PipedProcess.h"
#include "Require.h"
#include "support/HandleCensus.h"

namespace {

constexpr unsigned int settleMs = 500;

/// Threads that each have done something once, and wait for their end.
class Waiting {
public:
    explicit Waiting(const std::function<void()>& doOnce) {
        threads_.reserve(HostLife::moreThreads);
        for (int i = 0; i < HostLife::moreThreads; ++i) {
            threads_.emplace_back([this, &doOnce] {
                doOnce();
                ++done_;
                while (!ended_) common::sleepMs(1);
            });
            // One at a time: none is to be pushed out.
            await([&] { return done_ > i; }, "the call of a thread");
        }
    }
    ~Waiting() {
        ended_ = true;
        for (std::thread& each : threads_) each.join();
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

private:
    std::vector<std::thread> threads_;
    std::atomic<int> done_{0};
    std::atomic<bool> ended_{false};
};

Holdings holdingsNow(const KernelView& process) {
    common::sleepMs(settleMs);
    Holdings holdings;
    for (const auto& [type, count] : countHandles()) holdings.handles += count;
    holdings.memoryKb = process.memoryKb();
    holdings.threads = process.threads();
    return holdings;
}

void makeRequests(PeerBench& host, int requests) {
    for (int i = 0; i < requests; ++i) {
        if (i % 2 == 0)
            host.ping();
        else
            host.read(barepeer::readOnlyName(i / 2 % barepeer::readOnly));
    }
}

HostLife live(const KernelView& process, Transport transport, int requests) {
    HostLife life;
    life.begin = holdingsNow(process);
    PeerBench host(transport, 0, "memory");
    life.connected = holdingsNow(process);
    makeRequests(host, requests);
    life.used = holdingsNow(process);
    {
        const Waiting bare([] {});
        life.bare = holdingsNow(process);
    }
    life.bareEnded = holdingsNow(process);
    {
        const Waiting calling([&] { host.ping(); });
        life.calling = holdingsNow(process);
    }
    life.ended = holdingsNow(process);
    return life;
}

std::string newMark() {
    return fmt::format("{}-{:.0f}", GetCurrentProcessId(), nowUs());
}

}  // namespace

int runMemoryHost(Transport transport, int requests, const std::string& mark) {
    const KernelView process = KernelView::of("--memory-host", mark);
    fmt::print("{}\n", lineOf(live(process, transport, requests)));
    return 0;
}

void measureMemory(int requests, Report& report) {
    for (const Transport transport : {Transport::tcp, Transport::window}) {
        const char* const over = nameOf(transport);
        fmt::print("memory, {}\n", over);
        std::fflush(stdout);
        PipedProcess host("qor-bench.exe", fmt::format("--memory-host {} --requests {} --mark {}",
                                                       over, requests, newMark()));
        addLife(lifeIn(host.readLine()), requests, over, report);
    }
}
