#pragma once

#include "Report.h"
#include "Settings.h"

/// What a host holds of the system at the stages of its life: a process of its own for each
/// transport, which makes so many requests.
void measureMemory(int requests, Report& report);

/// That host; `mark` tells its process from all others. Returns the exit code of the process.
int runMemoryHost(Transport transport, int requests, const std::string& mark);
