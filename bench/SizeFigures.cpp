#include "SizeFigures.h"

#include <fmt/core.h>

#include "PeakMemory.h"
#include "SizeBench.h"
#include "SizePeer.h"
#include "support/TcpProcessFigures.h"

namespace {

/// The aim: at least half as fast as the raw socket, in at most three times the memory.
constexpr double leastShareOfRaw = 0.5;
constexpr double mostTimesData = 3.0;
constexpr int perRound = 5;

template <class Action>
double timesData(Action action) {
    const PeakMemory memory;
    action();
    return static_cast<double>(memory.growth()) / sizepeer::bytes;
}

}  // namespace

void measureSize(int rounds, Report& report) {
    Samples rawRead, rawWrite, fresh, read, write;
    SizeFloor floor;
    SizeBench facade;
    const auto before = static_cast<double>(tcp::memoryBytes());
    const double readMemory = timesData([&] { facade.read(); });
    for (int number = 0; number < sizepeer::parameters; ++number) facade.read(number);
    facade.letGo();
    const double kept = static_cast<double>(tcp::memoryBytes()) - before;
    facade.write();  // the host has its own array
    const double writeMemory = timesData([&] { facade.write(); });
    for (int round = 0; round < rounds; ++round) {
        measure(rawRead, perRound, [&] { floor.read(); });
        measure(read, perRound, [&] { facade.read(); });
        measure(rawWrite, perRound, [&] { floor.write(); });
        measure(fresh, perRound, [] { std::vector<char>(sizepeer::bytes, 1); });
        measure(write, perRound, [&] { facade.write(); });
    }
    const std::string what = fmt::format("{} doubles, TCP", sizepeer::doubles);
    report.add("floor: read " + what, rawRead);
    report.add("so much memory taken, filled, given back", fresh);
    report.add("getParamData, " + what, read, rawRead.p50() / leastShareOfRaw);
    report.add("floor: write " + what, rawWrite);
    report.add("setParamData, " + what, write, rawWrite.p50() / leastShareOfRaw);
    report.addAmount("memory while they are read, the host's own too", "x data", readMemory,
                     mostTimesData);
    report.addAmount("memory while they are written, without the host's own", "x data", writeMemory,
                     mostTimesData);
    report.addAmount("memory kept of 13 such parameters, read", "x data",
                     kept / (sizepeer::parameters * sizepeer::bytes));
}
