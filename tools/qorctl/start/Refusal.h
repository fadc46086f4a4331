#pragma once

#include <string>
#include <vector>

namespace qorctl::start {

/// What speaks against a conversation.
struct Refusal {
    std::string what;
    std::vector<std::string> details = {};  ///< lines below it: what to check, what a log tells
    bool isOccupied = false;                ///< another program is at that QOR
    bool hasEnded = false;                  ///< QOR was started and runs no more
    bool isForGood = true;                  ///< QOR will not come all the same
};

}  // namespace qorctl::start
