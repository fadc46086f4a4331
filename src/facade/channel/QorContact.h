#pragma once

#include <atomic>
#include <cstdint>

#include "common/Clock.h"

namespace channel {

/// When QOR was last known to have an ECU online. The agent notes it; anybody may ask.
class QorContact {
public:
    /// A moment ahead keeps the ECU looking online for so much longer.
    void note(common::Moment at) { lastQorContactTick_ = at; }
    /// As if there never had been any.
    void forget() { lastQorContactTick_ = common::Moment(); }

    /// For tests.
    common::Moment last() const { return lastQorContactTick_; }

    bool isEcuOnline() const { return isWithin(onlineMs); }
    bool isWithin(std::uint32_t spanMs) const {
        return lastQorContactTick_.load() + spanMs > common::now();
    }

private:
    static constexpr std::uint32_t onlineMs = 2000;

    std::atomic<common::Moment> lastQorContactTick_{common::Moment()};
};

}  // namespace channel
