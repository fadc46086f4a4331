#pragma once

#include <string>
#include <vector>

namespace qorctl::start {

/// Why a conversation cannot begin.
struct Refusal {
    std::string what;
    std::vector<std::string> details;  ///< lines below it: what to check, what a log tells
    bool isOccupied = false;           ///< another program is at that QOR
    bool hasEnded = false;             ///< QOR was started and runs no more
};

}  // namespace qorctl::start
