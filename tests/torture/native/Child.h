#pragma once

#include <functional>
#include <string>

namespace torture {

/// How a process has ended.
struct Ended {
    bool inOrder = false;  ///< by itself, with exit code 0
    std::string how;       ///< else: what happened, and all that it has written
};

/// Runs `body` in a process of its own, a copy of this one, for at most so long.
Ended runInChild(const std::function<int()>& body, unsigned int withinMs);

}  // namespace torture
