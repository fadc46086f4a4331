#include "ThreadCounts.h"

#include <algorithm>

#include "Samples.h"

namespace {

int doneBy(const Span& span) {
    int done = 0;
    for (const ThreadCount& each : span.threads) done += each.done;
    return done;
}

int leastDone(const Span& span) {
    return std::min_element(
               span.threads.begin(), span.threads.end(),
               [](const auto& one, const auto& other) { return one.done < other.done; })
        ->done;
}

double percentOf(const std::vector<Span>& spans, int ThreadCount::*kind) {
    double these = 0;
    double all = 0;
    for (const Span& span : spans)
        for (const ThreadCount& each : span.threads) {
            these += each.*kind;
            all += each.done + each.doneLate + each.pushedOut + each.failed;
        }
    return all > 0 ? 100 * these / all : 0;
}

}  // namespace

Together togetherOf(const std::vector<Span>& spans) {
    Samples all, mean, slowest;
    for (const Span& span : spans) {
        if (span.threads.empty()) continue;
        const double perS = doneBy(span) / span.seconds;
        all.add(perS);
        mean.add(perS / static_cast<double>(span.threads.size()));
        slowest.add(leastDone(span) / span.seconds);
    }
    return {all.p50(), mean.p50(), slowest.p50(), percentOf(spans, &ThreadCount::pushedOut),
            percentOf(spans, &ThreadCount::failed)};
}
