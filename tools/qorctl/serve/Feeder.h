#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace qorctl::serve {

/// A thread that does something again and again, every few milliseconds, until its end.
class Feeder {
public:
    /// @param look  given how often it was called before. What it throws, for want of memory, is
    ///              left to the next time.
    Feeder(unsigned int periodMs, std::function<void(unsigned int)> look);
    /// Waits until the present call has returned.
    ~Feeder();
    Feeder(const Feeder&) = delete;
    Feeder& operator=(const Feeder&) = delete;

private:
    std::atomic<bool> isOver_{false};
    std::thread thread_;
};

}  // namespace qorctl::serve
