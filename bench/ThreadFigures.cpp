#include "ThreadFigures.h"

#include <fmt/core.h>

#include <atomic>
#include <functional>
#include <map>
#include <thread>

#include "BarePeer.h"
#include "common/Deadline.h"
#include "PeerBench.h"
#include "qorcontrol/Outcome.h"
#include "ThreadCounts.h"

namespace {

/// The aims, for so many threads: so much of the rate of one, and of the mean for the slowest.
constexpr int heldTo = 8;
constexpr double rateAim = 0.9;
constexpr double slowestAim = 0.5;
constexpr int threadCounts[] = {1, heldTo, 64};
constexpr unsigned int spanMs = 1000;
/// A call that is pushed out waits for twice as long, in vain.
constexpr unsigned int timeoutMs = 250;

/// A call of the thread of that number; false if it failed.
using Calling = std::function<bool(QorControlFacade&, int)>;

bool ping(QorControlFacade& facade, int) {
    return facade.pingQor(timeoutMs);
}

bool read(QorControlFacade& facade, int thread) {
    std::vector<double> values;
    return facade.getParamData(barepeer::readOnlyName(thread), values, timeoutMs);
}

void count(bool succeeded, bool isLate, ThreadCount& counts) {
    if (succeeded)
        ++(isLate ? counts.doneLate : counts.done);
    else if (qorcontrol::lastOutcome().cause == qorcontrol::Cause::pushedOut)
        ++counts.pushedOut;
    else
        ++counts.failed;
}

Span spanOf(QorControlFacade& facade, const Calling& call, int threadCount) {
    Span span;
    span.threads.resize(static_cast<std::size_t>(threadCount));
    std::atomic<bool> begun{false};
    std::atomic<bool> ended{false};
    std::vector<std::thread> threads;
    threads.reserve(span.threads.size());
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            while (!begun) common::sleepMs(1);
            while (!ended) {
                const bool succeeded = call(facade, i);
                count(succeeded, ended, span.threads[static_cast<std::size_t>(i)]);
            }
        });
    const double startUs = nowUs();
    begun = true;
    common::sleepMs(spanMs);
    ended = true;
    span.seconds = (nowUs() - startUs) / 1e6;
    for (std::thread& each : threads) each.join();
    return span;
}

/// One kind of call over one transport, by number of threads.
struct Figures {
    const char* name;
    Transport transport;
    Calling call;
    std::map<int, std::vector<Span>> spans;

    void measure(QorControlFacade& facade) {
        for (const int threads : threadCounts)
            spans[threads].push_back(spanOf(facade, call, threads));
    }

    void report(Report& to) const {
        const double one = togetherOf(spans.at(1)).perS;
        for (const auto& [threads, own] : spans) report(threads, togetherOf(own), one, to);
    }

private:
    void report(int threads, const Together& together, double one, Report& to) const {
        const bool isHeld = threads == heldTo;
        const std::string who =
            fmt::format("{} thread{}, {}", threads, threads == 1 ? "" : "s", nameOf(transport));
        to.addRate(fmt::format("{}, {}", name, who), together.perS, isHeld ? rateAim * one : 0);
        if (threads == 1) return;
        to.addRate(fmt::format("{}, slowest of {}", name, who), together.slowestPerS,
                   isHeld ? slowestAim * together.meanPerS : 0);
        to.addAmount(fmt::format("{}, refused, {}", name, who), "% of calls",
                     together.pushedOutPercent);
        to.addAmount(fmt::format("{}, failed otherwise, {}", name, who), "% of calls",
                     together.failedPercent);
    }
};

}  // namespace

void measureThreads(int rounds, Report& report) {
    Figures all[] = {{"pingQor", Transport::tcp, ping, {}},
                     {"getParamData", Transport::tcp, read, {}},
                     {"pingQor", Transport::window, ping, {}},
                     {"getParamData", Transport::window, read, {}}};
    PeerBench tcp(Transport::tcp, 0, "threads");
    PeerBench window(Transport::window, 0, "threads");
    // From here on every name is known.
    for (PeerBench* const each : {&tcp, &window})
        for (int i = 0; i < barepeer::readOnly; ++i) each->read(barepeer::readOnlyName(i));
    for (int round = 0; round < rounds; ++round) {
        fmt::print("\rthreads, round {} of {}", round + 1, rounds);
        std::fflush(stdout);
        for (Figures& each : all)
            each.measure((each.transport == Transport::tcp ? tcp : window).facade());
    }
    fmt::print("\n");
    for (const Figures& each : all) each.report(report);
}
