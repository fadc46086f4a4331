#pragma once

#include <string>

#include "qorcontrol/Cause.h"

/// What is told of each cause.
namespace causetexts {

struct Texts {
    qorcontrol::Cause cause;
    const char* sentence;  ///< what happened, without the full stop
    const char* check;     ///< what to check, whole sentences
};

/// Empty texts for `none`, and for what is no cause.
const Texts& of(qorcontrol::Cause cause) noexcept;

/// The sentence with what else is known, which may be nothing or have several lines: "It did not
/// work: because of this."
std::string sentence(qorcontrol::Cause cause, const char* detail);

}  // namespace causetexts
