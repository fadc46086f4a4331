#include "RequestFigures.h"

#include <fmt/core.h>

#include "BlockingFloor.h"
#include "CopyDataFloor.h"
#include "DesignFloor.h"
#include "FacadeBench.h"
#include "protocol/RequestId.h"

namespace {

/// An aim in terms of a bound: p50 at most 1.3 times, p99 at most 3 times that.
constexpr double p50Factor = 1.3;
constexpr double p99Factor = 3.0;
constexpr double shortActionBoundUs = 1.0;
constexpr int cachedBatch = 1000;

/// A facade's requests and what they are held against. Everything takes its turn in one run, so
/// that a machine that changes its speed changes all.
struct FacadeSamples {
    Samples ping, read, cached;
};
struct RoundTrips {
    Samples fill, hop;
    Samples blocking, design;
    Samples copyData, copyDataBack;
    FacadeSamples tcp, window;
};

void measureFacade(int perRound, FacadeBench& facade, FacadeSamples& samples) {
    facade.readParam();  // the cache is off from here on
    measure(samples.ping, perRound, [&] { facade.ping(); });
    measure(samples.read, perRound, [&] { facade.readParam(); });
    facade.readCachedParam();  // and on
    measureBatches(samples.cached, 10, cachedBatch, [&] { facade.readCachedParam(); });
}

void measureRoundTrips(int rounds, int perRound, RoundTrips& all) {
    BlockingFloor blocking;
    DesignFloor design;
    CopyDataFloor copyData;
    ThreadHop hop;
    FacadeBench tcp(Transport::tcp);
    FacadeBench window(Transport::window);
    for (int round = 0; round < rounds; ++round) {
        fmt::print("\rround {} of {}", round + 1, rounds);
        std::fflush(stdout);
        measure(all.fill, perRound, [] { protocol::drawRequestId(); });
        measure(all.hop, perRound, [&] { hop.roundTrip(); });
        measure(all.blocking, perRound, [&] { blocking.roundTrip(); });
        measure(all.design, perRound, [&] { design.roundTrip(); });
        measureFacade(perRound, tcp, all.tcp);
        measure(all.copyData, perRound, [&] { copyData.sendAndResult(); });
        measure(all.copyDataBack, perRound, [&] { copyData.thereAndBack(); });
        measureFacade(perRound, window, all.window);
    }
    fmt::print("\n");
}

/// What a request may cost: the transport's floor, a generator fill for each command object that
/// the library builds for it, and the hop from the host's thread to the agent's and back.
double boundOf(const RoundTrips& all, const Samples& floor, int commandObjects) {
    return floor.p50() + commandObjects * all.fill.p50() + all.hop.p50();
}

void reportRequest(Report& report, const std::string& name, const Samples& samples, double bound) {
    report.add(name, samples, bound * p50Factor, bound * p50Factor * p99Factor);
}

void reportRoundTrips(const RoundTrips& all, Report& report) {
    report.add("generator fill", all.fill);
    report.add("floor: thread hop, there and back", all.hop);
    report.add("floor: blocking 32-byte TCP round trip", all.blocking);
    report.add("floor: asynchronous socket and hand-over", all.design);
    report.add("floor: copy-data message and its result", all.copyData);
    report.add("floor: copy-data message there and back", all.copyDataBack);
    // Over TCP every answer is an object of its own; a window message's result is none.
    const double tcp = boundOf(all, all.design, 2);
    reportRequest(report, "pingQor, TCP", all.tcp.ping, tcp);
    reportRequest(report, "getParamData, one value, TCP", all.tcp.read, tcp);
    reportRequest(report, "pingQor, window", all.window.ping, boundOf(all, all.copyData, 1));
    reportRequest(report, "getParamData, one value, window", all.window.read,
                  boundOf(all, all.copyDataBack, 2));
    report.add("getParamData, cached", all.tcp.cached, shortActionBoundUs);
}

}  // namespace

void measureRequests(int rounds, int perRound, Report& report) {
    RoundTrips roundTrips;
    measureRoundTrips(rounds, perRound, roundTrips);
    reportRoundTrips(roundTrips, report);
}
