#pragma once

#include <cstdint>

#include "common/Export.h"

/// Time as the library sees it: unsigned 32-bit tick counts in milliseconds that wrap every 49.7
/// days, and sleeping. Everything that reads the time or sleeps goes through here, so that tests
/// can put a clock of their own in its place.
namespace common {

/// A source of ticks and sleep. Implementations must be callable from any thread.
class IClock {
public:
    virtual std::uint32_t tickCount() = 0;
    virtual void sleepMs(unsigned int ms) = 0;

protected:
    ~IClock() = default;
};

QOR_API std::uint32_t tickCount();
QOR_API void sleepMs(unsigned int ms);

/// Replaces the process-wide clock; null brings the system's back. `replacement` is not owned and
/// must outlive its use. For tests: change it only while no thread of the library runs.
QOR_API void replaceClock(IClock* replacement);

/// Whether `now` lies beyond `start` + `spanMs`, all in wrap-around arithmetic.
inline bool hasPassed(std::uint32_t now, std::uint32_t start, std::uint32_t spanMs) {
    return now > static_cast<std::uint32_t>(start + spanMs);
}

}  // namespace common
