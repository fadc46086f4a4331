#pragma once

#include "Report.h"

/// Reads one behind the other over TCP, of a QOR that answers with its data and of one that
/// acknowledges first; of that one with and without the option "no delay".
void measureNoDelay(int rounds, Report& report);
