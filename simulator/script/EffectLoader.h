#pragma once

#include "config/JsonNode.h"
#include "script/Effect.h"
#include "script/ScriptUse.h"

namespace simulator {

/// Fails when the node asks for something that only the other transport has.
void requireTransport(const JsonNode& node, Transport needed, Transport actual);

/// {"afterMs": 20, "push": {...}}: a time and exactly one effect. `more` names further keys of the
/// same object that the caller reads itself. An effect of the other transport is an error.
TimedEffect timedEffectFrom(const JsonNode& node, const ScriptUse& use, const char* more = nullptr);

}  // namespace simulator
