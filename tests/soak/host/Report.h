#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "Locks.h"

namespace soak {

/// What the host tells its orchestrator, a line each.
class Report {
public:
    void line(const std::string& text);
    /// What must never be. `where` is enough to find the step again with the same seed.
    void breach(const std::string& where, const std::string& what);

    unsigned breaches() const { return breaches_; }

private:
    Lock lock_;
    std::atomic<unsigned> breaches_{0};
};

}  // namespace soak
