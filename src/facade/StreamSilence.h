#pragma once

#include <string>

#include "common/Verdict.h"

namespace sinkstreams {

/// Why a stream of values has brought nothing for a time, beyond what the cause says by itself.
struct Silence {
    qorcontrol::Cause cause = qorcontrol::Cause::notReady;
    std::string detail;
    const char* check = "";  ///< what to check, if not what the cause says; a constant text
};

/// By how the last registration of its names with QOR has ended. That is tried again and again: the
/// stream is silent, but not over. Only a name that is wrong will not mend by itself.
Silence silenceOf(const common::Verdict& registration);

}  // namespace sinkstreams
