#pragma once

#include <cstdint>

#include "common/Deadline.h"

namespace common {

/// A wait whose slices may end early (by a signal left over from before, say): the time alone
/// decides whether another one follows, and that is the library's, also where a test has replaced
/// it.
///
///     SlicedWait wait(timeoutMs);
///     do {
///         if (queue.pop(item, wait.sliceMs())) return true;
///     } while (wait.goesOn());
///
/// There is one slice at least, and the clock is read once at the start and once behind each.
class SlicedWait {
public:
    /// Waits `spanMs`, with `noLimitMs` for ever; any other number is a span like any other.
    explicit SlicedWait(std::uint32_t spanMs)
        : deadline_(endOf(now(), spanMs)), remainingMs_(spanMs) {}

    /// How long the present slice may take; `noLimitMs`: as long as it wants.
    std::uint32_t sliceMs() const { return remainingMs_; }

    /// Looks at the clock. Not strict: false once the whole span has passed.
    bool goesOn() {
        const Moment present = now();
        remainingMs_ = deadline_.remainingMs(present);
        return !deadline_.isReached(present);
    }

private:
    static Deadline endOf(Moment start, std::uint32_t spanMs) {
        // Not start + spanMs, which takes the number below "no limit" for a special one.
        return spanMs == noLimitMs ? Deadline::never() : Deadline::at(Moment(start.ms() + spanMs));
    }

    const Deadline deadline_;
    std::uint32_t remainingMs_;
};

}  // namespace common
