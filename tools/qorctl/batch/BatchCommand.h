#pragma once

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

/// Many operations in one conversation with QOR.
Action declareBatch(CLI::App& command);

}  // namespace qorctl
