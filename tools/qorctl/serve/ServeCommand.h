#pragma once

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

Action declareServe(CLI::App& command);

}  // namespace qorctl
