#pragma once

#include "Subcommands.h"

namespace qorctl {

/// Trouble codes as they change.
Action declareWatchDtc(CLI::App& command);

}  // namespace qorctl
