#pragma once

#include "Report.h"

/// A parameter of a million values, read and written over TCP.
void measureSize(int rounds, Report& report);
