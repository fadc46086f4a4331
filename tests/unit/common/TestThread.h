#pragma once

#include <functional>
#include <utility>

#include "common/Thread.h"
#include "qorcontrol/Event.h"

namespace testing_support {

/// Runs a function on a thread of its own and waits for its end at the latest when destroyed.
class TestThread {
public:
    explicit TestThread(std::function<void()> body) : body_(std::move(body)) {
        thread_.start(run, this);
    }
    ~TestThread() { join(); }

    /// True once the function has returned.
    bool endsWithin(unsigned int timeoutMs) {
        if (!joined_) joined_ = ended_.wait(timeoutMs);
        return joined_;
    }

    void join() { endsWithin(common::Event::infinite); }

private:
    static unsigned __stdcall run(void* self) {
        auto& thread = *static_cast<TestThread*>(self);
        thread.body_();
        thread.ended_.signal();
        return 0;
    }

    std::function<void()> body_;
    common::Event ended_;
    bool joined_ = false;
    common::Thread thread_;
};

}  // namespace testing_support
