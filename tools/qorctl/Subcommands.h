#pragma once

#include <functional>
#include <vector>

#include "Action.h"

namespace CLI {
class App;
}

namespace qorctl {

/// One command: a row of the table in Subcommands.cpp.
struct Subcommand {
    const char* name;
    const char* summary;
    const char* group;  ///< heading in the list of commands
    /// Declares the command's arguments and returns what it does with them.
    std::function<Action(CLI::App& command)> declare;
};

const std::vector<Subcommand>& subcommands();

}  // namespace qorctl
