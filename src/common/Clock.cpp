#include "common/Clock.h"

#include <windows.h>

#include <atomic>

#include "common/ClockSeam.h"

namespace common {
namespace {

class SystemClock final : public IClock {
public:
    // Not the 64-bit count of the system: who replaces this one moves the library's time with it.
    std::uint32_t tickCount() override { return GetTickCount(); }
    void sleepMs(unsigned int ms) override { Sleep(ms); }
};

SystemClock systemClock;
std::atomic<IClock*> current{&systemClock};

/// The count starts above 32 bits, so that no real moment is 0 ("never").
constexpr std::uint64_t beginning = std::uint64_t{1} << 32;
/// A system's count that steps back by so little is taken to stand still, not to have run for
/// almost 50 days.
constexpr std::uint32_t unsteadyMs = 1000;

/// The latest moment that any thread has seen; 0 before the first.
std::atomic<std::uint64_t> lastSeen{0};
#ifdef _WIN32  // some other systems align it too little for that
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the clock takes no lock");
#endif

/// The first moment from `seen` on at which the system's count is `tick`.
std::uint64_t continued(std::uint64_t seen, std::uint32_t tick) {
    const std::uint32_t ahead = tick - static_cast<std::uint32_t>(seen);
    const std::uint32_t back = 0u - ahead;
    return back <= unsteadyMs ? seen : seen + ahead;
}

}  // namespace

std::uint32_t tickCount() {
    return current.load()->tickCount();
}

Moment now() {
    // In this order: the count cannot lie before a moment that was seen before it, however many
    // other threads overtake this one meanwhile.
    std::uint64_t seen = lastSeen.load();
    const std::uint32_t tick = tickCount();
    if (seen == 0 && lastSeen.compare_exchange_strong(seen, beginning + tick))
        return Moment(beginning + tick);
    const std::uint64_t moment = continued(seen, tick);
    while (seen < moment && !lastSeen.compare_exchange_weak(seen, moment)) continue;
    return Moment(moment);
}

void sleepMs(unsigned int ms) {
    current.load()->sleepMs(ms);
}

void replaceClock(IClock* replacement) {
    current.store(replacement != nullptr ? replacement : &systemClock);
    lastSeen.store(0);
}

}  // namespace common
