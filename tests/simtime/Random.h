#pragma once

#include <cstdint>

namespace simtime {

/// All chance of a run, from its seed alone: the same numbers on every machine and with every
/// standard library.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15u;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    /// 0 to `count` - 1; `count` must not be 0.
    unsigned int below(unsigned int count) {
        return static_cast<unsigned int>(((next() >> 32) * count) >> 32);
    }
    unsigned int between(unsigned int least, unsigned int most) {
        return least + below(most - least + 1);
    }
    bool oneIn(unsigned int count) { return below(count) == 0; }

private:
    std::uint64_t state_;
};

}  // namespace simtime
