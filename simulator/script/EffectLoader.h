#pragma once

#include <initializer_list>

#include "config/JsonNode.h"
#include "script/Effect.h"

namespace simulator {

// {"afterMs": 20, "push": {...}}: a time and exactly one effect. `more` names further keys of the
// same object that the caller reads itself.
TimedEffect timedEffectFrom(const JsonNode& node, const char* more = nullptr);

}  // namespace simulator
