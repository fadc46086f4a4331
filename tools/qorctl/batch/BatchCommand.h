#pragma once

#include "Subcommands.h"

namespace qorctl {

/// Many operations in one conversation with QOR.
Action declareBatch(CLI::App& command);

}  // namespace qorctl
