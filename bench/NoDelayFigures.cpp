#include "NoDelayFigures.h"

#include "FacadeBench.h"
#include "Samples.h"

namespace {

constexpr double roundUs = 1e6;
constexpr double leastPerSecond = 700;

/// So many reads in how long.
struct Row {
    int reads = 0;
    double us = 0;

    double perSecond() const { return reads * 1e6 / us; }
    void measure(FacadeBench& facade) {
        const double start = nowUs();
        double end = start;
        for (; end - start < roundUs; end = nowUs(), ++reads) facade.readParam();
        us += end - start;
    }
};

}  // namespace

void measureNoDelay(int rounds, Report& report) {
    FacadeBench stamped(Transport::tcp);
    FacadeBench separate(Transport::tcp, Answers::separate);
    Row answered, delayed, atOnce;
    for (int round = 0; round < rounds; ++round) {
        answered.measure(stamped);
        separate.setNoDelay(false);
        separate.readParam();
        delayed.measure(separate);
        separate.setNoDelay(true);
        separate.readParam();
        atOnce.measure(separate);
    }
    report.addRate("reads, the data is the answer", answered.perSecond(), 0);
    report.addRate("reads, acknowledged first", delayed.perSecond(), 0);
    report.addRate("reads, acknowledged first, no delay", atOnce.perSecond(), leastPerSecond);
}
