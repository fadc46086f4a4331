#pragma once

#include <cstdint>

#include "common/TimeLimits.h"

namespace common {

/// A point in time, in milliseconds, that never wraps. Real ones come from `now`; one that is
/// made without a value is "never" and lies long before every real one.
class Moment {
public:
    constexpr Moment() = default;
    constexpr explicit Moment(std::uint64_t ms) : ms_(ms) {}

    constexpr std::uint64_t ms() const { return ms_; }

    /// The two greatest numbers are no spans (see TimeLimits.h). Where one of them is added all the
    /// same, it leads as far into the past as it lies below 2^32: what is due then is due at once,
    /// as it was when the count had 32 bits and the sum wrapped.
    friend constexpr Moment operator+(Moment start, std::uint32_t spanMs) {
        return spanMs >= transportDefaultMs ? start - (0u - spanMs) : Moment(start.ms_ + spanMs);
    }
    friend constexpr Moment operator-(Moment end, std::uint32_t spanMs) {
        return Moment(end.ms_ - spanMs);
    }
    /// The milliseconds between two; `earlier` must be that.
    friend constexpr std::uint64_t operator-(Moment later, Moment earlier) {
        return later.ms_ - earlier.ms_;
    }
    friend constexpr bool operator==(Moment one, Moment other) { return one.ms_ == other.ms_; }
    friend constexpr bool operator!=(Moment one, Moment other) { return one.ms_ != other.ms_; }
    friend constexpr bool operator<(Moment one, Moment other) { return one.ms_ < other.ms_; }
    friend constexpr bool operator>(Moment one, Moment other) { return one.ms_ > other.ms_; }
    friend constexpr bool operator<=(Moment one, Moment other) { return one.ms_ <= other.ms_; }
    friend constexpr bool operator>=(Moment one, Moment other) { return one.ms_ >= other.ms_; }

private:
    std::uint64_t ms_ = 0;
};

}  // namespace common
