#include "StreamFigures.h"

#include <fmt/core.h>

#include "AckFloor.h"
#include "FacadeBench.h"
#include "protocol/RequestId.h"
#include "StreamBench.h"

namespace {

constexpr unsigned int floorMs = 200;
constexpr unsigned int streamMs = 400;
constexpr int fills = 50;
/// The library builds two command objects for a pushed value: the received one and its
/// acknowledgement.
constexpr int objectsPerValue = 2;
/// The aim: at least 0.8 of the rate that floor and objects allow.
constexpr double rateAim = 0.8;
/// A request while values flow may take twice as long as without.
constexpr double requestAim = 2.0;
constexpr int wideWindow = barepeer::streamed;

constexpr StreamBench::Push oneAtATime{1, 0, 0};
constexpr StreamBench::Push manyAtATime{wideWindow, 0, 0};
constexpr StreamBench::Push allEvery100Ms{0, barepeer::streamed, 100000};
constexpr StreamBench::Push oneEveryMs{0, 1, 1000};

/// Values that are pushed without a pause.
struct Flood {
    Samples floorUs;
    Samples valueUs;
    Popped popped;
};

struct Requests {
    Samples ping;
    Samples read;
};

struct Streams {
    Samples fill;
    Flood narrow, wide;
    Popped slow, quick;
    Requests idle, whileSlow, whileQuick;
    Samples windowIdle, whileWindow;
};

void measureFlood(StreamBench& stream, AckFloor& floor, const StreamBench::Push& push,
                  Flood& flood) {
    floor.measureFor(floorMs, flood.floorUs);
    stream.setPush(push);
    flood.valueUs.add(stream.takeFor(streamMs, flood.popped));
    stream.setPush(StreamBench::atRest);
}

void measurePaced(StreamBench& stream, const StreamBench::Push& push, int perRound, Popped& popped,
                  Requests& requests) {
    stream.setPush(push);
    stream.takeFor(streamMs, popped);
    const auto taker = stream.taker();
    measure(requests.ping, perRound, [&] { stream.ping(); });
    measure(requests.read, perRound, [&] { stream.read(); });
}

void measureRound(StreamBench& stream, AckFloor& narrow, AckFloor& wide, int perRound,
                  Streams& all) {
    measure(all.idle.ping, perRound, [&] { stream.ping(); });
    measure(all.idle.read, perRound, [&] { stream.read(); });
    measure(all.fill, fills, [] { protocol::drawRequestId(); });
    stream.startStream();
    measureFlood(stream, narrow, oneAtATime, all.narrow);
    measureFlood(stream, wide, manyAtATime, all.wide);
    measurePaced(stream, allEvery100Ms, perRound, all.slow, all.whileSlow);
    measurePaced(stream, oneEveryMs, perRound, all.quick, all.whileQuick);
    stream.stopStream();
}

/// The same over window messages, where the agent's own thread takes every value.
void measureWindowRound(FacadeBench& window, int perRound, Streams& all) {
    measure(all.windowIdle, perRound, [&] { window.ping(); });
    const auto taker = window.startStream();
    measure(all.whileWindow, perRound, [&] { window.ping(); });
    window.stopStream();
}

void reportFlood(const Flood& flood, double fillUs, double seconds, const std::string& how,
                 Report& report) {
    const double boundUs = (flood.floorUs.p50() + objectsPerValue * fillUs) / rateAim;
    report.add("floor: value and ack, " + how, flood.floorUs);
    report.add("streamed value, " + how, flood.valueUs, boundUs);
    report.addRate("arrived, " + how, 1e6 / flood.valueUs.p50(), 1e6 / boundUs);
    report.addRate("popped, " + how, flood.popped.values / seconds);
    report.addRate("popped and new, " + how, flood.popped.news / seconds);
}

void reportAges(const Popped& popped, const std::string& rate, Report& report) {
    report.add("age at the first pop, " + rate, popped.newAgeUs);
    report.add("age at any pop, " + rate, popped.anyAgeUs);
}

void reportRequests(const Requests& requests, const Requests& idle, const std::string& rate,
                    Report& report) {
    report.add("pingQor, " + rate, requests.ping, requestAim * idle.ping.p50());
    report.add("getParamData, " + rate, requests.read, requestAim * idle.read.p50());
}

}  // namespace

void measureStreams(int rounds, int perRound, Report& report) {
    Streams all;
    AckFloor narrow(1);
    AckFloor wide(wideWindow);
    StreamBench stream(Transport::tcp);
    for (int round = 0; round < rounds; ++round) {
        fmt::print("\rstreams, round {} of {}", round + 1, rounds);
        std::fflush(stdout);
        measureRound(stream, narrow, wide, perRound, all);
    }
    {
        FacadeBench window(Transport::window);
        for (int round = 0; round < rounds; ++round) measureWindowRound(window, perRound, all);
    }
    fmt::print("\n");

    const double seconds = rounds * streamMs / 1000.0;
    report.add("generator fill, beside the streams", all.fill);
    reportFlood(all.narrow, all.fill.p50(), seconds, "1 on the way", report);
    reportFlood(all.wide, all.fill.p50(), seconds, "12 on the way", report);
    reportAges(all.slow, "12 per 100 ms", report);
    reportAges(all.quick, "1 per ms", report);
    report.add("pingQor, no stream", all.idle.ping);
    report.add("getParamData, no stream", all.idle.read);
    reportRequests(all.whileSlow, all.idle, "12 per 100 ms", report);
    reportRequests(all.whileQuick, all.idle, "1 per ms", report);
    report.add("pingQor, window, no stream", all.windowIdle);
    report.add("pingQor, window, 12 per 100 ms", all.whileWindow,
               requestAim * all.windowIdle.p50());
}
