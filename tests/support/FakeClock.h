#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "common/Clock.h"
#include "common/ClockSeam.h"

/// The library's clock for the life of this object: time stands still but for what the test and
/// the library's own sleeps add, and nobody really sleeps.
class FakeClock final : public common::IClock {
public:
    explicit FakeClock(std::uint32_t start = 1000000) : start_(start) {
        common::replaceClock(this);
    }
    ~FakeClock() { common::replaceClock(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    std::uint32_t tickCount() override {
        pass(msPerRead);
        return now();
    }
    void sleepMs(unsigned int ms) override {
        if (onSleep) onSleep(ms);
        pass(static_cast<std::uint64_t>(ms) * msPerSleptMs);
    }

    std::uint32_t now() const { return start_.load() + static_cast<std::uint32_t>(passed_.load()); }
    /// Time does not jump: the library has looked at it several times on a way of weeks.
    void advance(std::uint32_t ms) {
        constexpr std::uint32_t stepMs = 1u << 30;
        const std::uint32_t perRead = msPerRead.exchange(0);
        for (; ms > stepMs; ms -= stepMs) {
            pass(stepMs);
            common::now();
        }
        pass(ms);
        msPerRead = perRead;
    }
    /// Lets weeks pass, up to so many milliseconds before the count begins again at 0.
    void advanceToBeforeWrap(std::uint32_t ms) { advance(0u - ms - now()); }
    /// Jumps to a count, forth or back: nobody has looked on the way, and nothing becomes due.
    void show(std::uint32_t tick) { start_ += tick - now(); }
    /// What this clock showed at a moment.
    static std::uint32_t tickOf(common::Moment moment) {
        return static_cast<std::uint32_t>(moment.ms());
    }

    /// Runs `action` once that much more time has passed, on the thread that lets it pass: inside
    /// a sleep or a look at the clock. Only for tests of a single thread.
    void after(std::uint32_t ms, std::function<void()> action) {
        due_.emplace(passed_ + ms, std::move(action));
    }

    /// Time that each look at the clock takes: what ends loops that wait without sleeping.
    std::atomic<std::uint32_t> msPerRead{0};
    /// Makes sleeps longer than asked for, to get through long waits in few turns.
    std::atomic<std::uint32_t> msPerSleptMs{1};
    /// Called at each sleep, before its time passes.
    std::function<void(unsigned int ms)> onSleep;

private:
    void pass(std::uint64_t ms) {
        passed_ += ms;
        while (!due_.empty() && due_.begin()->first <= passed_) {
            const auto action = std::move(due_.begin()->second);
            due_.erase(due_.begin());
            action();
        }
    }

    std::atomic<std::uint32_t> start_;
    std::atomic<std::uint64_t> passed_{0};
    std::multimap<std::uint64_t, std::function<void()>> due_;
};
