#pragma once

#include <cstdint>

#include "qorcontrol/Arrivals.h"

namespace qorctl {

/// Seconds since its construction, on the clock of what arrives, and whether the time that a watch
/// was given is over.
class WatchClock {
public:
    /// `limitS`: 0 for no limit.
    explicit WatchClock(double limitS) : limitS_(limitS) {}

    double seconds() const { return secondsAt(qorcontrol::Arrivals::nowMs()); }
    /// At a moment that is not before the construction.
    double secondsAt(std::uint64_t timeMs) const {
        return static_cast<double>(timeMs - startMs_) / 1000;
    }
    bool isOver() const { return limitS_ > 0 && seconds() >= limitS_; }

private:
    const double limitS_;
    const std::uint64_t startMs_ = qorcontrol::Arrivals::nowMs();
};

}  // namespace qorctl
