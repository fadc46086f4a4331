#include "BesideFigures.h"

#include <fmt/core.h>

#include "StreamBench.h"

namespace {

/// The aim: so many times the same read without a stream.
constexpr double factor = 1.5;
constexpr StreamBench::Push oneEveryMs{0, 1, 1000};
/// A host looks at what comes before the reads begin.
constexpr unsigned int settleMs = 400;

struct Reads {
    Samples alone, beside;
    Samples usPerValue;
};

void measureRound(StreamBench& stream, int perRound, Reads& reads) {
    measure(reads.alone, perRound, [&] { stream.read(); });
    stream.startStream();
    stream.setPush(oneEveryMs);
    Popped popped;
    reads.usPerValue.add(stream.takeFor(settleMs, popped));
    {
        const auto taker = stream.taker();
        measure(reads.beside, perRound, [&] { stream.read(); });
    }
    stream.stopStream();
}

void addReads(const Reads& reads, Transport transport, Report& to) {
    const char* const over = nameOf(transport);
    to.add(fmt::format("read, no stream beside it, {}", over), reads.alone);
    to.add(fmt::format("read beside 1 value per ms, {}", over), reads.beside,
           factor * reads.alone.p50());
    to.addRate(fmt::format("values beside the reads, {}", over), 1e6 / reads.usPerValue.p50());
}

}  // namespace

void measureBeside(int rounds, int perRound, Report& report) {
    Reads tcpReads, windowReads;
    StreamBench tcp(Transport::tcp);
    StreamBench window(Transport::window);
    for (int round = 0; round < rounds; ++round) {
        fmt::print("\rbeside, round {} of {}", round + 1, rounds);
        std::fflush(stdout);
        measureRound(tcp, perRound, tcpReads);
        measureRound(window, perRound, windowReads);
    }
    fmt::print("\n");
    addReads(tcpReads, Transport::tcp, report);
    addReads(windowReads, Transport::window, report);
}
