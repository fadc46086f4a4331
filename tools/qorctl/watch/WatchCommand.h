#pragma once

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

/// Parameter values as they flow.
Action declareWatch(CLI::App& command);

}  // namespace qorctl
