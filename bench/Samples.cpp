#include "Samples.h"

#include <algorithm>
#include <cmath>

namespace {

double percentileOf(std::vector<double> sorted, double p) {
    if (sorted.empty()) return 0;
    const auto last = static_cast<double>(sorted.size() - 1);
    const auto rank = static_cast<std::ptrdiff_t>(std::floor(last * p + 0.5));
    std::nth_element(sorted.begin(), sorted.begin() + rank, sorted.end());
    return sorted[static_cast<std::size_t>(rank)];
}

}  // namespace

double Samples::percentile(double p) const {
    return percentileOf(us_, p);
}

std::vector<double> Samples::medians(std::size_t parts) const {
    const std::size_t count = std::min(parts, us_.size());
    const auto edge = [&](std::size_t part) {
        return us_.begin() + static_cast<std::ptrdiff_t>(us_.size() * part / count);
    };
    std::vector<double> medians;
    for (std::size_t part = 0; part < count; ++part)
        medians.push_back(percentileOf({edge(part), edge(part + 1)}, 0.5));
    return medians;
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
