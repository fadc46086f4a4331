#pragma once

#include "Report.h"

/// How many requests the threads of a host get together from one facade, and whether each gets its
/// share. The bare peer answers; each number of threads has a second of each round.
void measureThreads(int rounds, Report& report);
