#pragma once

#include <cstdint>

#include "common/Moment.h"
#include "qorcontrol/Sleep.h"

/// Time as the library sees it. The system counts milliseconds in 32 bits, which begin again at 0
/// every 49.7 days; all stamps and deadlines are moments, which go on. Everything that reads the
/// time or sleeps goes through here, so that tests can put a clock of their own in its place.
namespace common {

/// The system's count as it is, for showing it.
std::uint32_t tickCount();

/// The present moment: the system's count continued beyond 32 bits. Callable from any thread,
/// without a lock. It is right as long as somebody calls it once in 49 days; while a facade
/// works its agent does so all the time.
Moment now();

}  // namespace common
