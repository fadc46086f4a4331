#pragma once

#include <cstdint>

#include "qorcontrol/Event.h"

/// The two time-outs in milliseconds that are no spans. Everything that takes such numbers names
/// them by these; `Event` has the first from the system.
namespace common {

constexpr std::uint32_t noLimitMs = Event::infinite;
/// The transports' own time-out.
constexpr std::uint32_t transportDefaultMs = noLimitMs - 1;

}  // namespace common
