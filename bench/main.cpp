#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <vector>

#include "BlockingFloor.h"
#include "CodecBench.h"
#include "CopyDataFloor.h"
#include "DesignFloor.h"
#include "EchoPeer.h"
#include "FacadeBench.h"
#include "framework/AsyncSocket.h"
#include "IdleFigures.h"
#include "NoDelayFigures.h"
#include "PipedProcess.h"
#include "profile/ProfileFigures.h"
#include "protocol/RequestId.h"
#include "Report.h"
#include "ServeFigures.h"
#include "SizeFigures.h"
#include "SizePeer.h"
#include "StreamFigures.h"
#include "StreamPeer.h"

namespace {

struct Options {
    int rounds = 20;
    int perRound = 100;
    std::string jsonPath = "bench.json";
    unsigned int echoPeerPort = 0;
    std::string copyDataPeerTitle;
    unsigned int streamPeerPort = 0;
    unsigned int sizePeerPort = 0;
    unsigned int rawSizePeerPort = 0;
    int streamWindow = 0;
    std::string only;  ///< one of the sections; empty: all
    bool isProfile = false;
    bool isPipePeer = false;
};

/// An aim in terms of a bound: p50 at most 1.3 times, p99 at most 3 times that.
constexpr double p50Factor = 1.3;
constexpr double p99Factor = 3.0;
constexpr double shortActionBoundUs = 1.0;
constexpr int cachedBatch = 1000;
constexpr double leastShareOfCopy = 0.25;

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

void measureFacade(const Options& options, FacadeBench& facade, FacadeSamples& samples) {
    facade.readParam();  // the cache is off from here on
    measure(samples.ping, options.perRound, [&] { facade.ping(); });
    measure(samples.read, options.perRound, [&] { facade.readParam(); });
    facade.readCachedParam();  // and on
    measureBatches(samples.cached, 10, cachedBatch, [&] { facade.readCachedParam(); });
}

void measureRoundTrips(const Options& options, RoundTrips& all) {
    BlockingFloor blocking;
    DesignFloor design;
    CopyDataFloor copyData;
    ThreadHop hop;
    FacadeBench tcp(Transport::tcp);
    FacadeBench window(Transport::window);
    for (int round = 0; round < options.rounds; ++round) {
        fmt::print("\rround {} of {}", round + 1, options.rounds);
        std::fflush(stdout);
        measure(all.fill, options.perRound, [] { protocol::drawRequestId(); });
        measure(all.hop, options.perRound, [&] { hop.roundTrip(); });
        measure(all.blocking, options.perRound, [&] { blocking.roundTrip(); });
        measure(all.design, options.perRound, [&] { design.roundTrip(); });
        measureFacade(options, tcp, all.tcp);
        measure(all.copyData, options.perRound, [&] { copyData.sendAndResult(); });
        measure(all.copyDataBack, options.perRound, [&] { copyData.thereAndBack(); });
        measureFacade(options, window, all.window);
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

void measureRoundTripsOf(const Options& options, Report& report) {
    RoundTrips roundTrips;
    measureRoundTrips(options, roundTrips);
    reportRoundTrips(roundTrips, report);
}

void reportArrays(const ArrayResult& arrays, Report& report) {
    const double bound = arrays.copy.p50() / leastShareOfCopy;
    const std::string what = fmt::format("{} doubles", arrayLength);
    report.add("floor: copy of " + what, arrays.copy);
    report.add("write " + what, arrays.write, bound);
    report.add("read " + what, arrays.read, bound);
}

void measureCodecOf(const Options& options, Report& report) {
    for (const CodecResult& codec : measureCodec(options.rounds * 10))
        report.add(fmt::format("write + parse {} ({} B)", codec.command, codec.recordBytes),
                   codec.samples, shortActionBoundUs);
    reportArrays(measureArrays(options.rounds * 100), report);
}

/// A part of a run.
struct Section {
    std::string name;
    std::function<void(const Options&, Report&)> measure;
};

const std::vector<Section>& sections() {
    static const std::vector<Section> all = {
        {"requests", measureRoundTripsOf},
        {"codec", measureCodecOf},
        {"no-delay", [](const Options& of, Report& to) { measureNoDelay(of.rounds, to); }},
        {"size", [](const Options& of, Report& to) { measureSize(of.rounds, to); }},
        {"idle", [](const Options& of, Report& to) { measureIdle(of.rounds, to); }},
        {"streams",
         [](const Options& of, Report& to) { measureStreams(of.rounds, of.perRound, to); }},
        {"serve", [](const Options& of, Report& to) { measureServe(of.rounds, of.perRound, to); }}};
    return all;
}

std::vector<std::string> namesOfSections() {
    std::vector<std::string> names;
    for (const Section& section : sections()) names.push_back(section.name);
    return names;
}

int run(const Options& options) {
    Report report(options.rounds);
    for (const Section& section : sections())
        if (options.only.empty() || options.only == section.name) section.measure(options, report);
    report.print();
    report.writeJson(options.jsonPath);
    fmt::print("figures written to {}\n", options.jsonPath);
    return 0;
}

void addPeerOptions(CLI::App& app, Options& options) {
    const auto isHidden = [](CLI::Option* option) { option->group(""); };
    isHidden(app.add_option("--echo-peer", options.echoPeerPort, "be the other side of a floor"));
    isHidden(app.add_option("--copy-data-peer", options.copyDataPeerTitle,
                            "be the other side of a floor"));
    isHidden(app.add_flag("--pipe-peer", options.isPipePeer, "be the other side of a floor"));
    isHidden(app.add_option("--stream-peer", options.streamPeerPort,
                            "be the other side of the streams"));
    isHidden(app.add_option("--stream-window", options.streamWindow, "values on their way"));
    isHidden(app.add_option("--size-peer", options.sizePeerPort,
                            "be the other side of the large arrays"));
    isHidden(
        app.add_option("--raw-size-peer", options.rawSizePeerPort, "be the other side of a floor"));
}

int runAsTold(const Options& options) {
    if (options.isPipePeer) return runPipePeer();
    if (options.echoPeerPort != 0) return runEchoPeer(options.echoPeerPort);
    if (!options.copyDataPeerTitle.empty()) return runCopyDataPeer(options.copyDataPeerTitle);
    if (options.streamPeerPort != 0)
        return streampeer::run(options.streamPeerPort, options.streamWindow);
    if (options.sizePeerPort != 0) return sizepeer::run(options.sizePeerPort);
    if (options.rawSizePeerPort != 0) return sizepeer::runRaw(options.rawSizePeerPort);
    if (options.isProfile) return printProfile(options.rounds, options.perRound);
    return run(options);
}

}  // namespace

// The parser of the command line catches what it throws itself.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    Options options;
    CLI::App app("Measures QorControlFacade against the raw things it is made of.");
    app.add_option("--rounds", options.rounds, "rounds in which everything takes its turn")
        ->check(CLI::PositiveNumber);
    app.add_option("--per-round", options.perRound, "round trips of each kind in a round")
        ->check(CLI::PositiveNumber);
    app.add_option("--json", options.jsonPath, "file for the figures");
    app.add_option("--only", options.only, "measure nothing but this")
        ->check(CLI::IsMember(namesOfSections()));
    app.add_flag("--profile", options.isProfile,
                 "tell where the time of a request goes, and measure nothing else")
        ->excludes("--only")
        ->excludes("--json");
    addPeerOptions(app, options);
    CLI11_PARSE(app, argc, argv);
    AfxSocketInit();
    try {
        return runAsTold(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "qor-bench: {}\n", error.what());
        return 1;
    }
}
