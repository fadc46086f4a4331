#pragma once

#include <atomic>

#include "qorcontrol/Event.h"

namespace common {

/// How one thread tells another that there is something new to look at. Who tells pays for a call
/// of the system only while the other one waits.
class News {
public:
    /// From any thread, when what is new can be seen.
    void tell() noexcept {
        if (isAwaited_ && isAwaited_.exchange(false)) event_.signal();
    }

    /// For one wait of one thread at a time: the first that is new while it lives is told. What
    /// came before is not: who waits looks for that once more before he waits for this event, which
    /// may be signalled without need.
    class Awaiting {
    public:
        explicit Awaiting(News& news) : news_(news) { news_.isAwaited_ = true; }
        ~Awaiting() { news_.isAwaited_ = false; }
        Awaiting(const Awaiting&) = delete;
        Awaiting& operator=(const Awaiting&) = delete;

        Event& event() const { return news_.event_; }

    private:
        News& news_;
    };

private:
    Event event_;
    std::atomic<bool> isAwaited_{false};
};

}  // namespace common
