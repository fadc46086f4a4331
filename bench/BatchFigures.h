#pragma once

#include "Report.h"

/// What reads cost that bring much: three arrays of 1,000 values, and 100 parameters at once, both
/// held to a read of one value and the time in which their records are written and parsed. The bare
/// peer answers; `perRound`: reads of each kind in a round.
void measureBatch(int rounds, int perRound, Report& report);
