#pragma once

#include <cstdint>

namespace soak {

/// The decisions of one step of one worker. They depend on nothing but the seed, the worker and the
/// number of the step, so they are the same in each run, however the threads take turns.
class Dice {
public:
    Dice(std::uint64_t seed, std::uint64_t worker, std::uint64_t step)
        : state_(mixed(seed ^ mixed(worker ^ mixed(step)))) {}

    /// 0 to `count` - 1.
    unsigned below(unsigned count) {
        state_ = mixed(state_);
        return static_cast<unsigned>((state_ >> 16) % count);
    }

private:
    static std::uint64_t mixed(std::uint64_t value) {
        value += 0x9E3779B97F4A7C15ULL;
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
        return value ^ (value >> 31);
    }

    std::uint64_t state_;
};

}  // namespace soak
