#pragma once

#include <cstdint>

namespace simulator {

constexpr std::uint32_t highestStamp = 1023;

/// A value that tells what it was read of and when: the number, times 2^42, and the microseconds of
/// the system's steady clock in the 42 bits below. Whoever reads can tell it from any other value
/// and knows whether it was read before or after he asked, for programs of one machine share the
/// clock.
double stampOf(std::uint32_t number);

}  // namespace simulator
