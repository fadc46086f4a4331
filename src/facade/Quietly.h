#pragma once

#include <string>

#include "facade/FacadeState.h"

/// Operations that dispatch the calling thread's window messages while they wait, without that.
namespace quietly {

bool setEcuSegment(const FacadeState& state, const std::string& segment, bool flag);

}  // namespace quietly
