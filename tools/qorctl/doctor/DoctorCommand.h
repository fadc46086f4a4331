#pragma once

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

Action declareDoctor(CLI::App& command);

}  // namespace qorctl
