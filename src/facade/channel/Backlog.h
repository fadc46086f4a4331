#pragma once

#include <atomic>
#include <cstdint>

namespace channel {

/// The order of the requests, so that whoever waits for one can tell whether it was pushed out of
/// the full queue: the agent has then taken one that was posted after it, and never it. (While the
/// agent has taken no later one, it has been at others for the whole time: that is reason enough.)
/// Several threads may be given their numbers in another order than that in which they push: then
/// it takes an agent that has found the queue empty to tell that a request is not there any more.
/// Numbers begin again after 2^32 requests.
class Backlog {
public:
    /// For a request that is about to be posted.
    std::uint32_t nextNumber() noexcept { return ++lastNumber_; }

    /// Asked behind a push: requests with greater numbers are pushed later, for certain.
    std::uint32_t lastNumber() const noexcept { return lastNumber_; }

    /// Said by the agent when it takes a request.
    void noteTaken(std::uint32_t number) noexcept { taken_ = number; }

    /// Said by the agent when it has found no request.
    void noteEmpty() noexcept { ++empties_; }

    /// How often it has.
    std::uint32_t empties() const noexcept { return empties_; }

    /// Whether it has found none after the moment in which `empties` was the number: for certain
    /// the second time, as the first may have been found before that moment and told behind it.
    bool wasEmptySince(std::uint32_t empties) const noexcept {
        return static_cast<std::int32_t>(empties_ - empties) >= 2;
    }

    /// Whether the agent has taken a request with a greater number.
    bool hasPassed(std::uint32_t number) const noexcept {
        return static_cast<std::int32_t>(taken_ - number) > 0;
    }

private:
    std::atomic<std::uint32_t> lastNumber_{0};
    std::atomic<std::uint32_t> taken_{0};
    std::atomic<std::uint32_t> empties_{0};
};

}  // namespace channel
