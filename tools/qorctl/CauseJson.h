#pragma once

#include <nlohmann/json.hpp>

#include "qorcontrol/Outcome.h"

namespace qorctl {

/// The name of a cause as in qorcontrol/Cause.h.
const char* nameOf(qorcontrol::Cause cause);

/// Number, name, sentence and what to check; null for `none`.
nlohmann::json jsonOf(const qorcontrol::Outcome& told);

}  // namespace qorctl
