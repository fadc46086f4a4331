#pragma once

#include "qorcontrol/Cause.h"

namespace common {

/// How a request has ended, beyond its true or false. It travels from where a failure happens to
/// the thread of the host that waits.
struct Verdict {
    qorcontrol::Cause cause = qorcontrol::Cause::none;
    const char* detail = "";  ///< what the cause does not tell by itself; a constant text, or none
    bool mayBelongToEarlier = false;  ///< see qorcontrol::Outcome
    const char* check = "";  ///< what to check, if not what the cause says; a constant text
};

}  // namespace common
