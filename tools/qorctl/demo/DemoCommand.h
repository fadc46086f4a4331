#pragma once

#include "Subcommands.h"

namespace qorctl {

Action declareDemo(CLI::App& command);

}  // namespace qorctl
