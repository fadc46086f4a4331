#pragma once

#include <functional>
#include <vector>

#include "common/ClockSeam.h"

namespace testing_support {

/// Stands in for the process's clock while it lives. Sleeping takes no time: it is noted, and
/// `whileAsleep` runs.
class FakeClock : public common::IClock {
public:
    FakeClock() { common::replaceClock(this); }
    ~FakeClock() { common::replaceClock(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    std::uint32_t tickCount() override { return now; }
    void sleepMs(unsigned int ms) override {
        sleepsMs.push_back(ms);
        now += ms;
        if (whileAsleep) whileAsleep();
    }

    std::uint32_t now = 0;
    std::vector<unsigned int> sleepsMs;
    std::function<void()> whileAsleep;
};

}  // namespace testing_support
