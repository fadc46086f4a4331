#pragma once

#include <atomic>

namespace common {

/// Whether anybody still waits for the outcome of a piece of work. Shared by the one who waits and
/// by all who work for him, on whatever thread: what nobody waits for any more need not be begun.
class Interest {
public:
    /// Said by the one who waits, once and for all.
    void giveUp() noexcept { givenUp_ = true; }

    bool isGivenUp() const noexcept { return givenUp_; }

private:
    std::atomic<bool> givenUp_{false};
};

}  // namespace common
