#pragma once

#include "model/ParameterStore.h"
#include "script/Script.h"
#include "wire/Record.h"

namespace simulator {

/// What a script's rules can look at in a request. "operation" is the word that tells a command's
/// variants apart: stage, connection mode, shutdown flags, operation, routine.
RequestFacts factsOf(const Record& request, const ParameterStore& parameters);

}  // namespace simulator
