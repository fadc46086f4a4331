#include "BatchFigures.h"

#include <fmt/core.h>

#include <functional>

#include "BarePeer.h"
#include "CodecRound.h"
#include "PeerBench.h"
#include "protocol/Commands.h"
#include "Require.h"

namespace {

constexpr unsigned int timeoutMs = 2000;
constexpr int together = 100;
/// The aim: so many times a read of one value and the codec's time.
constexpr double factor = 1.5;

std::vector<std::string> namesAtOnce() {
    std::vector<std::string> names;
    names.reserve(together);
    for (int i = 0; i < together; ++i) names.push_back(barepeer::readOnlyName(i));
    return names;
}

/// The reads of one facade.
class Reads {
public:
    explicit Reads(Transport transport) : peer_(transport, 0, "batch") {}

    void one() { peer_.read(barepeer::readOnlyName(0)); }

    void threeArrays() {
        require(peer_.facade().getParamData(barepeer::arrays, first_, second_, third_, timeoutMs) &&
                    third_.size() == barepeer::perArray,
                "a read of three arrays");
    }

    void atOnce() {
        require(peer_.facade().getParamDataAtOnce(names_, values_, timeoutMs) &&
                    values_.size() == together && values_.back().size() == 1,
                "a read of many parameters");
    }

private:
    PeerBench peer_;
    const std::vector<std::string> names_ = namesAtOnce();
    std::vector<double> first_, second_, third_;
    std::vector<std::vector<double>> values_;
};

/// The records of one exchange, written and parsed.
template <class Command>
class Exchange {
public:
    Command request, answer;

    void operator()() {
        writeAndRead(request, read_);
        writeAndRead(answer, read_);
    }

private:
    typename Command::Payload read_;
};

Exchange<CommandStaticParam> exchangeOfArrays() {
    Exchange<CommandStaticParam> exchange;
    const std::vector<double> values(barepeer::perArray, 1.0 / 7);
    exchange.answer.payload().first = values;
    exchange.answer.payload().second = values;
    exchange.answer.payload().third = values;
    return exchange;
}

Exchange<CommandReadTogether> exchangeAtOnce() {
    Exchange<CommandReadTogether> exchange;
    protocol::ReadTogether& asked = exchange.request.payload();
    asked.names = namesAtOnce();
    asked.paramIndices.assign(together, 1);
    exchange.answer.payload() = asked;
    exchange.answer.payload().values.assign(together, {1.0 / 7});
    return exchange;
}

struct Times {
    Samples one, arrays, atOnce;
};

void measureReads(Reads& reads, int perRound, Times& times) {
    measure(times.one, perRound, [&] { reads.one(); });
    measure(times.arrays, perRound, [&] { reads.threeArrays(); });
    measure(times.atOnce, perRound, [&] { reads.atOnce(); });
}

void reportReads(const Times& times, const Times& codec, Transport transport, Report& report) {
    const auto row = [&](const char* what, const Samples& samples, double boundUs) {
        report.add(fmt::format("read of {}, {}", what, nameOf(transport)), samples, boundUs);
    };
    const double oneUs = times.one.p50();
    row("1 value", times.one, 0);
    row("3 x 1000 values", times.arrays, factor * (oneUs + codec.arrays.p50()));
    row("100 parameters at once", times.atOnce, factor * (oneUs + codec.atOnce.p50()));
}

}  // namespace

void measureBatch(int rounds, int perRound, Report& report) {
    auto arrays = exchangeOfArrays();
    auto atOnce = exchangeAtOnce();
    Times codec, tcpTimes, windowTimes;
    Reads tcp(Transport::tcp);
    Reads window(Transport::window);
    for (int round = 0; round < rounds; ++round) {
        fmt::print("\rbatch, round {} of {}", round + 1, rounds);
        std::fflush(stdout);
        measure(codec.arrays, perRound, std::ref(arrays));
        measure(codec.atOnce, perRound, std::ref(atOnce));
        measureReads(tcp, perRound, tcpTimes);
        measureReads(window, perRound, windowTimes);
    }
    fmt::print("\n");
    report.add("write + parse, read of 3 x 1000 values", codec.arrays);
    report.add("write + parse, read of 100 at once", codec.atOnce);
    reportReads(tcpTimes, codec, Transport::tcp, report);
    reportReads(windowTimes, codec, Transport::window, report);
}
