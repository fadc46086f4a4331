#pragma once

#include <string>
#include <utility>

#include "qorcontrol/Outcome.h"

namespace cinterface {

using qorcontrol::Cause;
using qorcontrol::Outcome;

inline Outcome failure(Cause cause, std::string sentence, std::string check) {
    Outcome outcome;
    outcome.cause = cause;
    outcome.sentence = std::move(sentence);
    outcome.check = std::move(check);
    return outcome;
}

/// Thrown within a call of the interface, never out of it: the call ends with this.
struct Refusal {
    Outcome outcome;
};

[[noreturn]] inline void refuse(Cause cause, std::string sentence, std::string check) {
    throw Refusal{failure(cause, std::move(sentence), std::move(check))};
}

/// For an argument that no request can be made of.
[[noreturn]] inline void refuseArgument(std::string sentence, std::string check) {
    refuse(Cause::badArgument, std::move(sentence), std::move(check));
}

}  // namespace cinterface
