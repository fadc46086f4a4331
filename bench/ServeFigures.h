#pragma once

#include "Report.h"

/// What "qorctl serve" adds to a call, over each of its ways, and what its clients cost.
void measureServe(int rounds, int perRound, Report& report);
