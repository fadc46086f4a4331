#include "model/Stamp.h"

#include <chrono>
#include <cmath>

namespace simulator {

namespace {

constexpr int timeBits = 42;
constexpr std::int64_t timeMask = (std::int64_t{1} << timeBits) - 1;

}  // namespace

double stampOf(std::uint32_t number) {
    using namespace std::chrono;
    const auto sinceStart = steady_clock::now().time_since_epoch();
    const std::int64_t time = duration_cast<microseconds>(sinceStart).count() & timeMask;
    return std::ldexp(static_cast<double>(number), timeBits) + static_cast<double>(time);
}

}  // namespace simulator
