#pragma once

#include "Faults.h"
#include "Operations.h"

namespace torture {

/// Plays an operation before a faked QOR while its calls are recorded. 0 if it has worked.
int playAndRecord(const Operation& operation);

/// Plays it while the call at the site fails, and looks at what comes of it: that the operation
/// came back with a result that is documented, that the next one works (or, where the agent has
/// ended, tells so, and another facade works), that no thread, handle or memory is left. Says what
/// is wrong on standard error; 0 if nothing is.
int playAndFail(const Operation& operation, const Site& site);

}  // namespace torture
