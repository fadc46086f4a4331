#pragma once

#include "Operations.h"

namespace soak {

/// Makes each call that waits for an answer, so that the calling thread has the answer queue of
/// each: one that gave up has none until its next call. Where the library can answer without QOR it
/// does, to be quick.
void callEachOnce(Turn& turn);

}  // namespace soak
