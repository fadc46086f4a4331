#pragma once

#include <cstdint>

/// Where tests put a clock of their own in place of the system's. Not for hosts: the library's
/// DLL does not export it.
namespace common {

/// A source of ticks and sleep. Implementations must be callable from any thread.
class IClock {
public:
    virtual std::uint32_t tickCount() = 0;
    virtual void sleepMs(unsigned int ms) = 0;

protected:
    ~IClock() = default;
};

/// Replaces the process-wide clock; null brings the system's back. Moments begin anew with the
/// next look at the clock: one from before says nothing about one from behind. `replacement` is
/// not owned and must outlive its use. Change it only while no thread of the library runs.
void replaceClock(IClock* replacement);

}  // namespace common
