#include "common/Clock.h"

#include <windows.h>

#include <atomic>

namespace common {
namespace {

class SystemClock final : public IClock {
public:
    std::uint32_t tickCount() override { return GetTickCount(); }
    void sleepMs(unsigned int ms) override { Sleep(ms); }
};

SystemClock systemClock;
std::atomic<IClock*> current{&systemClock};

}  // namespace

std::uint32_t tickCount() {
    return current.load()->tickCount();
}

void sleepMs(unsigned int ms) {
    current.load()->sleepMs(ms);
}

void replaceClock(IClock* replacement) {
    current.store(replacement != nullptr ? replacement : &systemClock);
}

}  // namespace common
