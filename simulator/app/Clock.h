#pragma once

#include <chrono>
#include <cstdint>

namespace simulator {

inline std::uint64_t nowMs() {
    using namespace std::chrono;
    const auto sinceStart = steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(duration_cast<milliseconds>(sinceStart).count());
}

}  // namespace simulator
