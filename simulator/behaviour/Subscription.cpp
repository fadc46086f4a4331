#include "behaviour/Subscription.h"

#include <algorithm>
#include <utility>

namespace simulator {

void Subscription::replace(std::vector<std::uint32_t> indices) {
    if (indices_.empty()) nextMs_ = 0;
    indices_ = std::move(indices);
}

void Subscription::setPeriod(std::uint32_t periodMs) {
    periodMs_ = std::max(periodMs, minPeriodMs);
}

void Subscription::stall(std::uint32_t index, bool stalled) {
    if (stalled) {
        stalled_.insert(index);
    } else {
        stalled_.erase(index);
    }
}

void Subscription::stallAll(bool stalled) {
    allStalled_ = stalled;
    if (!stalled) stalled_.clear();
}

std::vector<std::uint32_t> Subscription::poll(std::uint64_t nowMs) {
    if (indices_.empty() || nowMs < nextMs_) return {};
    nextMs_ += periodMs_;
    if (nextMs_ <= nowMs) nextMs_ = nowMs + periodMs_;
    if (allStalled_) return {};
    std::vector<std::uint32_t> due;
    for (const std::uint32_t index : indices_) {
        if (stalled_.count(index) == 0) due.push_back(index);
    }
    return due;
}

std::optional<std::uint64_t> Subscription::nextMs() const {
    if (indices_.empty()) return std::nullopt;
    return nextMs_;
}

}  // namespace simulator
