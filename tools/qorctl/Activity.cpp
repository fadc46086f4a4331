#include "Activity.h"

#include <fmt/format.h>

#include <utility>

namespace qorctl {
namespace {

constexpr std::chrono::milliseconds tickSpan(100);
constexpr unsigned int barChars = 16;
constexpr unsigned int blockChars = 4;

/// A block that wanders to and fro.
std::string barAt(unsigned int tick) {
    const unsigned int way = barChars - blockChars;
    const unsigned int phase = tick % (2 * way);
    const unsigned int place = phase <= way ? phase : 2 * way - phase;
    std::string bar(barChars, '.');
    bar.replace(place, blockChars, blockChars, '#');
    return bar;
}

}  // namespace

Activity::Activity(Console& console, std::string title, std::function<std::string()> state)
    : console_(console),
      title_(std::move(title)),
      state_(std::move(state)),
      start_(std::chrono::steady_clock::now()),
      thread_([this] { run(); }) {}

Activity::~Activity() {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        ended_ = true;
    }
    ending_.notify_one();
    thread_.join();
    console_.eraseTransient();
}

void Activity::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (unsigned int tick = 0; !ended_; ++tick) {
        lock.unlock();
        show(tick);
        lock.lock();
        ending_.wait_for(lock, tickSpan, [this] { return ended_; });
    }
}

void Activity::show(unsigned int tick) {
    const std::string state = state_();
    if (console_.isTerminal()) {
        console_.transient(
            fmt::format("[{}] {:5.1f} s  {}: {}", barAt(tick), elapsedS(), title_, state));
    } else if (state != lastState_) {
        console_.line(fmt::format("...     {}: {} ({:.1f} s)", title_, state, elapsedS()));
    }
    lastState_ = state;
}

double Activity::elapsedS() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

}  // namespace qorctl
