#pragma once

#include <atomic>

#include "qorcontrol/Cause.h"

namespace common {

/// Whether anybody still waits for the outcome of a piece of work, and how far that is. Shared by
/// the one who waits and by all who work for him, on whatever thread: what nobody waits for any
/// more need not be begun, and who gives up learns why there was no outcome.
class Interest {
public:
    /// Said by the one who waits, once and for all.
    void giveUp() noexcept { givenUp_ = true; }

    bool isGivenUp() const noexcept { return givenUp_; }

    /// Said by those who work for him: why there would be no outcome if he gave up now. `none`: the
    /// work has not been begun.
    void notePresent(qorcontrol::Cause cause) noexcept { present_ = cause; }
    qorcontrol::Cause present() const noexcept { return present_; }

private:
    std::atomic<bool> givenUp_{false};
    std::atomic<qorcontrol::Cause> present_{qorcontrol::Cause::none};
};

}  // namespace common
