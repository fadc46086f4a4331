#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "BlockingFloor.h"
#include "CodecBench.h"
#include "DesignFloor.h"
#include "EchoPeer.h"
#include "FacadeBench.h"
#include "framework/AsyncSocket.h"
#include "protocol/RequestId.h"
#include "Report.h"

namespace {

struct Options {
    int rounds = 20;
    int perRound = 100;
    std::string jsonPath = "bench.json";
    unsigned int echoPeerPort = 0;
};

/// An aim in terms of a bound: p50 at most 1.3 times, p99 at most 3 times that.
constexpr double p50Factor = 1.3;
constexpr double p99Factor = 3.0;
constexpr double shortActionBoundUs = 1.0;
constexpr int cachedBatch = 1000;

/// Everything that takes turns in one run, so that a machine that changes its speed changes all.
struct RoundTrips {
    Samples fill, blocking, design, hop, ping, read, cached;
};

void measureRoundTrips(const Options& options, RoundTrips& all) {
    BlockingFloor blocking;
    DesignFloor design;
    ThreadHop hop;
    FacadeBench facade;
    for (int round = 0; round < options.rounds; ++round) {
        fmt::print("\rround {} of {}", round + 1, options.rounds);
        std::fflush(stdout);
        measure(all.fill, options.perRound, [] { protocol::drawRequestId(); });
        measure(all.blocking, options.perRound, [&] { blocking.roundTrip(); });
        measure(all.design, options.perRound, [&] { design.roundTrip(); });
        measure(all.hop, options.perRound, [&] { hop.roundTrip(); });
        facade.readParam();  // the cache is off from here on
        measure(all.ping, options.perRound, [&] { facade.ping(); });
        measure(all.read, options.perRound, [&] { facade.readParam(); });
        facade.readCachedParam();  // and on
        measureBatches(all.cached, 10, cachedBatch, [&] { facade.readCachedParam(); });
    }
    fmt::print("\n");
}

/// The bound of a request: the design's floor, a generator fill for each of the two command
/// objects that the library builds (the request and the parsed answer), and the hop from the
/// host's thread to the agent's and back.
double requestBound(const RoundTrips& all) {
    return all.design.p50() + 2 * all.fill.p50() + all.hop.p50();
}

void reportRoundTrips(const RoundTrips& all, Report& report) {
    const double bound = requestBound(all);
    report.add("generator fill", all.fill);
    report.add("floor: blocking 32-byte TCP round trip", all.blocking);
    report.add("floor: asynchronous socket and hand-over", all.design);
    report.add("floor: thread hop, there and back", all.hop);
    report.add("pingQor", all.ping, bound * p50Factor, bound * p50Factor * p99Factor);
    report.add("getParamData, one value", all.read, bound * p50Factor,
               bound * p50Factor * p99Factor);
    report.add("getParamData, cached", all.cached, shortActionBoundUs);
}

int run(const Options& options) {
    Report report;
    RoundTrips roundTrips;
    measureRoundTrips(options, roundTrips);
    reportRoundTrips(roundTrips, report);
    for (const CodecResult& codec : measureCodec(options.rounds * 10))
        report.add(fmt::format("write + parse {} ({} B)", codec.command, codec.recordBytes),
                   codec.samples, shortActionBoundUs);
    report.print();
    report.writeJson(options.jsonPath);
    fmt::print("figures written to {}\n", options.jsonPath);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Measures QorControlFacade against the raw things it is made of.");
    app.add_option("--rounds", options.rounds, "rounds in which everything takes its turn")
        ->check(CLI::PositiveNumber);
    app.add_option("--per-round", options.perRound, "round trips of each kind in a round")
        ->check(CLI::PositiveNumber);
    app.add_option("--json", options.jsonPath, "file for the figures");
    app.add_option("--echo-peer", options.echoPeerPort, "be the other side of a floor")->group("");
    CLI11_PARSE(app, argc, argv);
    AfxSocketInit();
    try {
        if (options.echoPeerPort != 0) return runEchoPeer(options.echoPeerPort);
        return run(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "qor-bench: {}\n", error.what());
        return 1;
    }
}
