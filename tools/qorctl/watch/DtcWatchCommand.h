#pragma once

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

/// Trouble codes as they change.
Action declareWatchDtc(CLI::App& command);

}  // namespace qorctl
