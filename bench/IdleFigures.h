#pragma once

#include "Report.h"

/// What the library costs while it has nothing to do, while it waits, and while a dozen values come
/// 10 times a second: the work of this program and of Wine's server, in per cent of one core,
/// beside a floor of two threads that look around every millisecond.
void measureIdle(int rounds, Report& report);
