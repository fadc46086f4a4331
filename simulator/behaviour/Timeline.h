#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "script/Effect.h"

namespace simulator {

/// Effects that wait for their time; those of the same time happen in the order of planning.
class Timeline {
public:
    void plan(const std::vector<TimedEffect>& effects, std::uint64_t sinceMs) {
        for (const TimedEffect& timed : effects) {
            waiting_.emplace(sinceMs + timed.afterMs, timed.effect);
        }
    }

    std::optional<Effect> take(std::uint64_t nowMs) {
        if (waiting_.empty() || waiting_.begin()->first > nowMs) return std::nullopt;
        Effect effect = std::move(waiting_.begin()->second);
        waiting_.erase(waiting_.begin());
        return effect;
    }

    std::optional<std::uint64_t> nextMs() const {
        if (waiting_.empty()) return std::nullopt;
        return waiting_.begin()->first;
    }

private:
    std::multimap<std::uint64_t, Effect> waiting_;
};

}  // namespace simulator
