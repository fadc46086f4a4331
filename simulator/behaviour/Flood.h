#pragma once

#include "behaviour/Outbox.h"
#include "script/Effect.h"

namespace simulator {

/// The window message of a flood with that number. Always the same for the same seed and number,
/// and never one that a client accepts: a client must come out of a flood as it went into it.
Delivery floodMessage(const FloodEffect& flood, std::uint32_t number);

}  // namespace simulator
