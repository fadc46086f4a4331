#pragma once

#include "Report.h"

/// Measures the streams against their floors and adds the figures. `perRound`: requests of each
/// kind in a round.
void measureStreams(int rounds, int perRound, Report& report);
