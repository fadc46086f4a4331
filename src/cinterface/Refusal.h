#pragma once

#include <string>

#include "qorcontrol/Outcome.h"

namespace cinterface {

using qorcontrol::Cause;
using qorcontrol::Outcome;

/// With the words that are told of the cause; `detail` is what else is known, or empty.
Outcome failure(Cause cause, const std::string& detail);

/// Thrown within a call of the interface, never out of it: the call ends with this.
struct Refusal {
    Outcome outcome;
};

[[noreturn]] void refuse(Cause cause, const std::string& detail);

/// For an argument that no request can be made of.
[[noreturn]] void refuseArgument(const std::string& detail);

}  // namespace cinterface
