#include "ServeFigures.h"

#include <fmt/core.h>

#include <mutex>
#include <thread>

#include "common/Deadline.h"
#include "FacadeBench.h"
#include "KernelView.h"
#include "ServeBench.h"

namespace {

/// The aims: a call over standard input takes at most this many times the same call in the host;
/// the server needs at most that share of a core for the greatest number of subscribers.
constexpr double stdioFactor = 1.5;
constexpr double mostShare = 10;
constexpr int clientCounts[] = {1, 8, 32};
constexpr int greatestCount = 32;
constexpr unsigned int streamPeriodMs = 100;
constexpr unsigned int settleMs = 1000;
constexpr unsigned int streamMs = 5000;
constexpr double valuesPerS = 12 * 1000.0 / streamPeriodMs;
/// Of the values that QOR sends, so many should arrive.
constexpr double leastOfValues = 0.9;

struct Calls {
    Samples ping, read, cached;
};

struct Serve {
    Samples pipe;
    Calls host, stdio, http;
};

void measureCalls(FacadeBench& host, ServeBench& serve, HttpCaller& caller, PipedProcess& peer,
                  int perRound, Serve& all) {
    const auto over = [&](const char* request) { caller.post("/rpc", "", request); };
    measure(all.pipe, perRound, [&] {
        peer.write(std::string(ServeBench::pingRequest) + "\n");
        peer.readLine();
    });
    host.readParam();  // the cache is off from here on
    serve.readParam();
    measure(all.host.ping, perRound, [&] { host.ping(); });
    measure(all.stdio.ping, perRound, [&] { serve.ping(); });
    measure(all.http.ping, perRound, [&] { over(ServeBench::pingRequest); });
    measure(all.host.read, perRound, [&] { host.readParam(); });
    measure(all.stdio.read, perRound, [&] { serve.readParam(); });
    measure(all.http.read, perRound, [&] { over(ServeBench::readRequest); });
    host.readCachedParam();  // and on
    serve.readCachedParam();
    measure(all.host.cached, perRound, [&] { host.readCachedParam(); });
    measure(all.stdio.cached, perRound, [&] { serve.readCachedParam(); });
    measure(all.http.cached, perRound, [&] { over(ServeBench::readRequest); });
}

/// So many clients ask at once, each again and again.
void measureAtOnce(unsigned int port, int clients, int calls, Samples& samples, double& perS) {
    std::mutex mutex;
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(clients));
    const double begin = nowUs();
    for (int i = 0; i < clients; ++i)
        threads.emplace_back([&] {
            HttpCaller caller(port);
            Samples own;
            measure(own, calls, [&] { caller.post("/rpc", "", ServeBench::pingRequest); });
            const std::lock_guard<std::mutex> guard(mutex);
            samples.add(own);
        });
    for (std::thread& each : threads) each.join();
    perS = clients * calls * 1e6 / (nowUs() - begin);
}

/// What a server with a number of clients with streams costs.
struct StreamCost {
    double valuesPerS = 0;
    double missed = 0;
    double serverShare = 0;      ///< of one core, in per cent
    double wineServerShare = 0;  ///< all that Wine's server did meanwhile, for whomever
};

StreamCost measureSubscribers(ServeBench& serve, int count) {
    StreamCost cost;
    const auto server = KernelView::of(serve.settingsPath(), "--stdio");
    const auto wineServer = KernelView::ofWineServer();
    std::vector<std::unique_ptr<Subscriber>> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) all.push_back(std::make_unique<Subscriber>(serve.port()));
    for (const auto& each : all) each->subscribe();
    common::sleepMs(settleMs);
    const auto values = [&] {
        double sum = 0;
        for (const auto& each : all) sum += static_cast<double>(each->values());
        return sum;
    };
    const double begin = nowUs();
    const double before = values();
    const double serverBefore = server.workS();
    const double wineBefore = wineServer.workS();
    common::sleepMs(streamMs);
    const double seconds = (nowUs() - begin) / 1e6;
    cost.valuesPerS = (values() - before) / seconds;
    cost.serverShare = 100 * (server.workS() - serverBefore) / seconds;
    cost.wineServerShare = 100 * (wineServer.workS() - wineBefore) / seconds;
    for (const auto& each : all) cost.missed += static_cast<double>(each->missed());
    return cost;
}

/// The same stream into this process, with nothing but the library: the share of a core.
double shareOfLibrary(FacadeBench& host) {
    const auto taker = host.startStream();
    common::sleepMs(settleMs);
    const double begin = nowUs();
    const double before = ownWorkS();
    common::sleepMs(streamMs);
    const double share = 100 * (ownWorkS() - before) / ((nowUs() - begin) / 1e6);
    host.stopStream();
    return share;
}

/// Of a server that has done nothing yet: what each client adds that only follows the events.
void reportMemory(ServeBench& serve, Report& report) {
    const auto server = KernelView::of(serve.settingsPath(), "--stdio");
    const double before = server.memoryKb();
    std::vector<std::unique_ptr<Subscriber>> all;
    all.reserve(greatestCount);
    for (int i = 0; i < greatestCount; ++i)
        all.push_back(std::make_unique<Subscriber>(serve.port()));
    common::sleepMs(settleMs);
    report.addAmount("the server's memory without a client", "KiB", before);
    report.addAmount("the server's memory, more for each of 32", "KiB",
                     (server.memoryKb() - before) / greatestCount);
    for (const auto& each : all) each->subscribe();
    common::sleepMs(streamMs);
    report.addAmount("the same, each with a stream of 12 values", "KiB",
                     (server.memoryKb() - before) / greatestCount);
}

void reportCalls(const std::string& name, Samples Calls::*kind, double stdioBoundUs,
                 const Serve& all, Report& report) {
    report.add(name + ", in the host", all.host.*kind);
    report.add(name + ", over stdio", all.stdio.*kind, stdioBoundUs);
    report.add(name + ", over HTTP", all.http.*kind);
}

void reportStreams(const std::string& who, int count, const StreamCost& cost, Report& report) {
    report.addRate("values, " + who, cost.valuesPerS, leastOfValues * count * valuesPerS);
    report.addAmount("missed, " + who, "values", cost.missed);
    report.addAmount("the server's work, " + who, "% of a core", cost.serverShare,
                     count == greatestCount ? mostShare : 0);
    report.addAmount("Wine's server's work, " + who, "% of a core", cost.wineServerShare);
}

void reportAtOnce(const ServeBench& serve, int count, int calls, Report& report) {
    Samples samples;
    double perS = 0;
    measureAtOnce(serve.port(), count, calls, samples, perS);
    const std::string who = fmt::format("pingQor, {} at once over HTTP", count);
    report.add(who, samples);
    report.addRate(who, perS);
}

void measureRounds(FacadeBench& host, ServeBench& serve, int rounds, int perRound, Serve& all) {
    PipedProcess peer("qor-bench.exe", "--pipe-peer");
    HttpCaller caller(serve.port());
    for (int round = 0; round < rounds; ++round) {
        fmt::print("\rserve, round {} of {}", round + 1, rounds);
        std::fflush(stdout);
        measureCalls(host, serve, caller, peer, perRound, all);
    }
}

std::string subscribers(int count) {
    return fmt::format("{} subscriber{}", count, count == 1 ? "" : "s");
}

}  // namespace

void measureServe(int rounds, int perRound, Report& report) {
    Serve all;
    FacadeBench host(Transport::tcp);
    ServeBench serve;
    serve.connect(streamPeriodMs);
    reportMemory(serve, report);
    measureRounds(host, serve, rounds, perRound, all);
    report.add("floor: a line there and back over pipes", all.pipe);
    reportCalls("pingQor", &Calls::ping, stdioFactor * all.host.ping.p50(), all, report);
    reportCalls("getParamData", &Calls::read, stdioFactor * all.host.read.p50(), all, report);
    // In the host that is no exchange with anybody: no other process can be near it.
    reportCalls("getParamData, cached", &Calls::cached, 0, all, report);
    for (const int count : clientCounts) reportAtOnce(serve, count, perRound, report);
    report.addAmount("the library's work in a host, the same stream", "% of a core",
                     shareOfLibrary(host));
    serve.connect(streamPeriodMs);
    report.addAmount("the server's work without a client", "% of a core",
                     measureSubscribers(serve, 0).serverShare);
    for (const int count : clientCounts)
        reportStreams(subscribers(count), count, measureSubscribers(serve, count), report);
    fmt::print("\n");
}
