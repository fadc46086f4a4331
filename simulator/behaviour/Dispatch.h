#pragma once

#include <cstdint>

#include "behaviour/Ecu.h"
#include "behaviour/Outcome.h"
#include "script/Script.h"
#include "wire/Record.h"

namespace simulator {

/// Carries out a request. plan and answerMs concern a connect only: how it goes, and when its
/// acknowledgement leaves.
Outcome dispatch(Ecu& ecu, const Record& request, const BootstrapPlan& plan,
                 std::uint64_t answerMs);

}  // namespace simulator
