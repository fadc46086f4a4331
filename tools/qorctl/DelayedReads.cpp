#include "DelayedReads.h"

#include <algorithm>

namespace qorctl {
namespace {

constexpr std::size_t enough = 5;
constexpr std::size_t most = 100;

struct Span {
    double fromMs;
    double toMs;
    bool has(double ms) const { return ms >= fromMs && ms <= toMs; }
};

/// Linux confirms after 40 ms, Windows after 200.
constexpr Span confirmations[] = {{38, 60}, {190, 240}};

bool isDelay(double ms, const Span& span) {
    return span.has(ms) || span.has(ms / 2);
}

}  // namespace

void DelayedReads::note(double ms) {
    if (times_.size() < most)
        times_.push_back(ms);
    else
        times_[next_++ % most] = ms;
}

std::optional<double> DelayedReads::usualMs() const {
    if (times_.size() < enough) return std::nullopt;
    for (const Span& span : confirmations) {
        const auto delayed = std::count_if(times_.begin(), times_.end(),
                                           [&](double ms) { return isDelay(ms, span); });
        if (static_cast<std::size_t>(delayed) * 5 < times_.size() * 4) continue;
        std::vector<double> sorted = times_;
        std::sort(sorted.begin(), sorted.end());
        return sorted[sorted.size() / 2];
    }
    return std::nullopt;
}

}  // namespace qorctl
