#pragma once

#include <cstdint>

#include "common/Clock.h"
#include "common/Moment.h"
#include "common/TimeLimits.h"

namespace common {

/// When a wait ends: a moment, or never.
class Deadline {
public:
    /// Ends at `end`. For a time-out in which "no limit" is not meant for this wait: added to a
    /// moment (see there), that number is due at once.
    static constexpr Deadline at(Moment end) { return Deadline(end, false); }
    /// Ends `spanMs` after `start`, with `noLimitMs` never.
    static constexpr Deadline after(Moment start, std::uint32_t spanMs) {
        return Deadline(start + spanMs, spanMs == noLimitMs);
    }
    static constexpr Deadline never() { return Deadline(Moment(), true); }

    /// Strict: the last millisecond of the span belongs to the wait, `now` must lie beyond it.
    constexpr bool hasPassed(Moment now) const { return !never_ && now > end_; }
    /// Not strict: a wait that has taken its whole span is over.
    constexpr bool isReached(Moment now) const { return !never_ && now >= end_; }

    /// These look at the clock, also where there is no limit.
    bool hasPassed() const { return hasPassed(now()); }
    bool isReached() const { return isReached(now()); }

    /// What is left, as a time-out: 0 at the end and beyond, `noLimitMs` without one. A rest that
    /// is too long for a number of 32 bits is the longest span.
    constexpr std::uint32_t remainingMs(Moment now) const {
        if (never_) return noLimitMs;
        if (isReached(now)) return 0;
        const std::uint64_t rest = end_ - now;
        return rest < noLimitMs ? static_cast<std::uint32_t>(rest) : noLimitMs - 1;
    }

    /// How long one wait may take of many that look around in between: `mostMs` at most, and not
    /// beyond the moment in which the deadline `hasPassed`. Looks at the clock.
    std::uint32_t sliceMs(std::uint32_t mostMs) const {
        const std::uint32_t restMs = remainingMs(now());
        return restMs < mostMs ? restMs + 1 : mostMs;
    }

private:
    constexpr Deadline(Moment end, bool never) : end_(end), never_(never) {}

    Moment end_;
    bool never_;
};

}  // namespace common
