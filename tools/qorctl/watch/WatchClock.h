#pragma once

#include <chrono>

namespace qorctl {

/// Seconds since its construction, and whether the time that a watch was given is over.
class WatchClock {
public:
    /// `limitS`: 0 for no limit.
    explicit WatchClock(double limitS) : limitS_(limitS) {}

    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }
    bool isOver() const { return limitS_ > 0 && seconds() >= limitS_; }

private:
    const double limitS_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace qorctl
