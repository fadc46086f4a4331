#pragma once

#include "qorcontrol/Export.h"

namespace common {

/// Lets the calling thread rest; with the clock of a test as that one wants.
QOR_API void sleepMs(unsigned int ms);

}  // namespace common
