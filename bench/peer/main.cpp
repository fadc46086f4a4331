#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "EchoPeer.h"
#include "RawTcp.h"
#include "Report.h"
#include "ZeroMq.h"

namespace {

struct Options {
    int rounds = 20;
    int perRound = 100;
    std::string jsonPath = "peer.json";
};

int run(const Options& options) {
    RawTcp raw;  // first: its process must not be made where ZeroMQ has threads already
    ZeroMq library;
    raw.roundTrip();
    library.roundTrip();  // which connects
    Samples floor, requests;
    for (int round = 0; round < options.rounds; ++round) {
        measure(floor, options.perRound, [&] { raw.roundTrip(); });
        measure(requests, options.perRound, [&] { library.roundTrip(); });
    }
    Report report(options.rounds);
    report.add(fmt::format("floor: {}-byte TCP round trip, native", echoBytes), floor);
    report.add(fmt::format("ZeroMQ, {}-byte request and reply", echoBytes), requests);
    report.print();
    report.writeJson(options.jsonPath);
    return 0;
}

}  // namespace

// The parser of the command line catches what it throws itself.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    Options options;
    CLI::App app("Measures a messaging library against the raw thing that it is made of.");
    app.add_option("--rounds", options.rounds, "rounds in which both take their turn")
        ->check(CLI::PositiveNumber);
    app.add_option("--per-round", options.perRound, "round trips of each kind in a round")
        ->check(CLI::PositiveNumber);
    app.add_option("--json", options.jsonPath, "file for the figures");
    CLI11_PARSE(app, argc, argv);
    try {
        return run(options);
    } catch (const std::exception& error) {
        fmt::print(stderr, "qor-bench-peer: {}\n", error.what());
        return 1;
    }
}
