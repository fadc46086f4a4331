#include "Samples.h"

#include <windows.h>

#include <algorithm>
#include <cmath>

double Samples::percentile(double p) const {
    if (us_.empty()) return 0;
    std::vector<double> sorted = us_;
    const auto last = static_cast<double>(sorted.size() - 1);
    const auto rank = static_cast<std::ptrdiff_t>(std::floor(last * p + 0.5));
    std::nth_element(sorted.begin(), sorted.begin() + rank, sorted.end());
    return sorted[static_cast<std::size_t>(rank)];
}

double nowUs() {
    static const double perUs = [] {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return static_cast<double>(frequency.QuadPart) / 1e6;
    }();
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return static_cast<double>(counter.QuadPart) / perUs;
}

void measure(Samples& samples, int count, const std::function<void()>& action) {
    measureBatches(samples, count, 1, action);
}

void measureBatches(Samples& samples, int runs, int batch, const std::function<void()>& action) {
    for (int run = 0; run < runs; ++run) {
        const double start = nowUs();
        for (int call = 0; call < batch; ++call) action();
        samples.add((nowUs() - start) / batch);
    }
}
