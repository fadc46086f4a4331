#pragma once

#include "Action.h"
#include "operations/Operation.h"

namespace CLI {
class App;
}

namespace qorctl {

/// The operation as a command of its own: QOR is started, the ECU connected if it needs one, the
/// operation done, everything shut down.
Action declareOperation(const Operation& operation, CLI::App& command);

}  // namespace qorctl
