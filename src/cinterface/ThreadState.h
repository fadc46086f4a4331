#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "cinterface/Result.h"
#include "qorcontrol/Outcome.h"

namespace cinterface {

/// What the interface keeps for one thread of the host's, until that thread ends.
struct ThreadState {
    qorcontrol::Outcome lastCall;
    /// So many functions of hosts are called on this thread at the moment, one within the other.
    unsigned int callbackDepth = 0;
    /// By the serial of the session.
    std::map<std::uint64_t, std::shared_ptr<ResultPlace>> results;
};

}  // namespace cinterface
