#pragma once

#include "Report.h"

/// Measures the requests that a host makes most against their floors. `perRound`: requests of each
/// kind in a round.
void measureRequests(int rounds, int perRound, Report& report);
