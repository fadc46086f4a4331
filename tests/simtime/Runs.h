#pragma once

#include "Station.h"

namespace simtime {

/// A run in a process of its own: what the library keeps for the life of a process is new in each,
/// and one that crashes takes nothing with it, which is a finding.
Report runApart(const Wish& wish);

/// One line for people, and the findings.
void print(const Wish& wish, const Report& report, double seconds);

}  // namespace simtime
