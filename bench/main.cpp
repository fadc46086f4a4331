#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <vector>

#include "BarePeer.h"
#include "BatchFigures.h"
#include "BesideFigures.h"
#include "CodecBench.h"
#include "CopyDataFloor.h"
#include "EchoPeer.h"
#include "framework/AsyncSocket.h"
#include "IdleFigures.h"
#include "MemoryFigures.h"
#include "NoDelayFigures.h"
#include "PipedProcess.h"
#include "profile/ProfileFigures.h"
#include "Report.h"
#include "RequestFigures.h"
#include "ServeFigures.h"
#include "SizeFigures.h"
#include "SizePeer.h"
#include "StreamFigures.h"
#include "ThreadFigures.h"

namespace {

struct Options {
    int rounds = 20;
    int perRound = 100;
    std::string jsonPath = "bench.json";
    unsigned int echoPeerPort = 0;
    std::string copyDataPeerTitle;
    unsigned int barePeerPort = 0;
    int bareWindow = 0;
    unsigned int sizePeerPort = 0;
    unsigned int rawSizePeerPort = 0;
    std::vector<std::string> windowPeerTitles;  ///< its own and the host's
    std::string only;                           ///< one of the sections; empty: all
    bool isProfile = false;
    bool isPipePeer = false;
    int requests = 100000;
    std::string memoryHostOver;
    std::string mark;
};

constexpr double shortActionBoundUs = 1.0;
constexpr double leastShareOfCopy = 0.25;

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

/// Of figures that are measured in rounds.
template <class Measure>
auto inRounds(Measure measure) {
    return [=](const Options& options, Report& report) { measure(options.rounds, report); };
}
template <class Measure>
auto inFullRounds(Measure measure) {
    return [=](const Options& options, Report& report) {
        measure(options.rounds, options.perRound, report);
    };
}

const std::vector<Section>& sections() {
    static const std::vector<Section> all = {
        {"requests", inFullRounds(measureRequests)},
        {"batch", inFullRounds(measureBatch)},
        {"threads", inRounds(measureThreads)},
        {"beside", inFullRounds(measureBeside)},
        {"codec", measureCodecOf},
        {"size", inRounds(measureSize)},
        {"no-delay", inRounds(measureNoDelay)},
        {"idle", inRounds(measureIdle)},
        {"memory", [](const Options& of, Report& to) { measureMemory(of.requests, to); }},
        {"streams", inFullRounds(measureStreams)},
        {"serve", inFullRounds(measureServe)}};
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

/// Nothing a user gives: this program starts itself as the other side of its figures.
void addOptionsOfPeers(CLI::App& app, Options& options) {
    app.add_option("--echo-peer", options.echoPeerPort, "be the other side of a floor")->group("");
    app.add_option("--copy-data-peer", options.copyDataPeerTitle, "be the other side of a floor")
        ->group("");
    app.add_flag("--pipe-peer", options.isPipePeer, "be the other side of a floor")->group("");
    app.add_option("--bare-peer", options.barePeerPort, "be QOR")->group("");
    app.add_option("--bare-window", options.bareWindow, "values on their way")->group("");
    app.add_option("--size-peer", options.sizePeerPort, "be QOR")->group("");
    app.add_option("--raw-size-peer", options.rawSizePeerPort, "be the other side of a floor")
        ->group("");
    app.add_option("--memory-host", options.memoryHostOver, "be a host")->group("");
    app.add_option("--mark", options.mark, "tells that host from others")->group("");
    app.add_option("--window-peer", options.windowPeerTitles, "be QOR")->expected(2)->group("");
}

void addOptions(CLI::App& app, Options& options) {
    app.add_option("--rounds", options.rounds, "rounds in which everything takes its turn")
        ->check(CLI::PositiveNumber);
    app.add_option("--per-round", options.perRound, "round trips of each kind in a round")
        ->check(CLI::PositiveNumber);
    app.add_option("--requests", options.requests, "made by the host whose memory is measured")
        ->check(CLI::PositiveNumber);
    app.add_option("--json", options.jsonPath, "file for the figures");
    app.add_option("--only", options.only, "measure nothing but this")
        ->check(CLI::IsMember(namesOfSections()));
    app.add_flag("--profile", options.isProfile,
                 "tell where the time of a request goes, and measure nothing else")
        ->excludes("--only")
        ->excludes("--json");
}

int runAny(const Options& options) {
    if (options.isPipePeer) return runPipePeer();
    if (options.echoPeerPort != 0) return runEchoPeer(options.echoPeerPort);
    if (!options.copyDataPeerTitle.empty()) return runCopyDataPeer(options.copyDataPeerTitle);
    if (options.barePeerPort != 0) return barepeer::run(options.barePeerPort, options.bareWindow);
    if (options.sizePeerPort != 0) return sizepeer::run(options.sizePeerPort);
    if (options.rawSizePeerPort != 0) return sizepeer::runRaw(options.rawSizePeerPort);
    if (!options.windowPeerTitles.empty())
        return barepeer::runWindow(options.windowPeerTitles.at(0), options.windowPeerTitles.at(1));
    if (!options.memoryHostOver.empty())
        return runMemoryHost(
            options.memoryHostOver == nameOf(Transport::tcp) ? Transport::tcp : Transport::window,
            options.requests, options.mark);
    if (options.isProfile) return printProfile(options.rounds, options.perRound);
    return run(options);
}

}  // namespace

// The parser of the command line catches what it throws itself.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    Options options;
    CLI::App app("Measures QorControlFacade against the raw things it is made of.");
    addOptions(app, options);
    addOptionsOfPeers(app, options);
    CLI11_PARSE(app, argc, argv);
    AfxSocketInit();
    try {
        return runAny(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "qor-bench: {}\n", error.what());
        return 1;
    }
}
