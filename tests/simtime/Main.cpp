// Simulated years of a test station: simtime [--seeds N] [--from SEED] [--days D]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Runs.h"

namespace {

constexpr double msPerDay = 86400000;

struct Arguments {
    std::uint64_t seeds = 3;
    std::uint64_t from = 1;
    double days = 30;
};

bool parse(int count, char** texts, Arguments& arguments) {
    for (int i = 1; i < count; i += 2) {
        if (i + 1 == count) return false;
        if (std::strcmp(texts[i], "--seeds") == 0)
            arguments.seeds = std::strtoull(texts[i + 1], nullptr, 10);
        else if (std::strcmp(texts[i], "--from") == 0)
            arguments.from = std::strtoull(texts[i + 1], nullptr, 10);
        else if (std::strcmp(texts[i], "--days") == 0)
            arguments.days = std::strtod(texts[i + 1], nullptr);
        else
            return false;
    }
    return arguments.seeds != 0 && arguments.days > 0;
}

}  // namespace

int main(int count, char** texts) {
    Arguments arguments;
    if (!parse(count, texts, arguments)) {
        std::fputs("usage: simtime [--seeds N] [--from SEED] [--days D]\n", stderr);
        return 2;
    }
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    simtime::Report sum;
    for (std::uint64_t i = 0; i < arguments.seeds; ++i) {
        const simtime::Wish wish = {arguments.from + i,
                                    static_cast<simtime::Ms>(arguments.days * msPerDay)};
        const Clock::time_point start = Clock::now();
        const simtime::Report report = simtime::runApart(wish);
        print(wish, report, std::chrono::duration<double>(Clock::now() - start).count());
        sum.simulatedMs += report.simulatedMs;
        sum.calls += report.calls;
        sum.faults += report.faults;
        sum.takenForNext += report.takenForNext;
        sum.wraps += report.wraps;
        sum.findingCount += report.findingCount;
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::printf(
        "%llu seeds: %.2f years, %llu calls, %llu faults, %llu copies taken for the next answer, "
        "%u wraps, %.0f s, factor %.0f, "
        "%llu findings\n",
        static_cast<unsigned long long>(arguments.seeds),
        static_cast<double>(sum.simulatedMs) / msPerDay / 365.25,
        static_cast<unsigned long long>(sum.calls), static_cast<unsigned long long>(sum.faults),
        static_cast<unsigned long long>(sum.takenForNext), sum.wraps, seconds,
        static_cast<double>(sum.simulatedMs) / 1000 / seconds,
        static_cast<unsigned long long>(sum.findingCount));
    return sum.findingCount == 0 ? 0 : 1;
}
