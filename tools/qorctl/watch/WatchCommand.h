#pragma once

#include "Subcommands.h"

namespace qorctl {

/// Parameter values as they flow.
Action declareWatch(CLI::App& command);

}  // namespace qorctl
