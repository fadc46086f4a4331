#pragma once

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

Action declareDemo(CLI::App& command);

}  // namespace qorctl
