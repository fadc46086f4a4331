#pragma once

#include <functional>
#include <vector>

namespace CLI {
class App;
}

namespace qorctl {

/// What a command does once its command line is understood; returns the exit code.
using Action = std::function<int()>;

/// One command: a row of the table in Subcommands.cpp.
struct Subcommand {
    const char* name;
    const char* summary;
    const char* group;  ///< heading in the list of commands
    /// Declares the command's arguments and returns what it does with them.
    std::function<Action(CLI::App& command)> declare;
};

const std::vector<Subcommand>& subcommands();

/// Exit codes.
constexpr int exitSuccess = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

}  // namespace qorctl
