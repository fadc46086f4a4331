#pragma once

#include "Report.h"

/// Measures a read beside a stream that brings one value per millisecond, held to the same read
/// without a stream, over either transport. `perRound`: reads of each kind in a round.
void measureBeside(int rounds, int perRound, Report& report);
