#pragma once

#include <atomic>

#include "common/Thread.h"

namespace channel {

/// The agent's thread, and what its two sides tell each other about its end. The thread's handle
/// belongs to the facade, the end of its work to the agent; anybody may ask.
class AgentLife {
public:
    /// See common::Thread. Once, by the facade.
    bool start(common::Thread::Entry entry, void* share) { return thread_.start(entry, share); }

    /// Whether the agent still works: it has not noted its end, and the system says so too (a
    /// thread can end without returning).
    bool isOperating() const;

    /// The same without asking the system, which costs more than a look into the value cache.
    bool mayBeOperating() const { return thread_.isRunning() && !failed_; }

    /// The facade's wish; the agent ends after the request that it is at.
    void askToEnd() { mayGoOn_ = false; }
    bool mayGoOn() const { return mayGoOn_; }

    /// Noted by an agent that has failed: it works no more, and looks after itself.
    void noteFailure() { failed_ = true; }
    bool hasFailed() const { return failed_; }

    /// For whoever awaits its end. The turn lets one caller in at a time, for as long as it lives.
    class Turn;
    common::Thread& thread() { return thread_; }

private:
    common::Thread thread_;
    std::atomic<bool> mayGoOn_{true};
    std::atomic<bool> failed_{false};
    std::atomic<bool> isBeingEnded_{false};
};

/// Others wait for their turn by sleeping: a lock must not be held so long.
class AgentLife::Turn {
public:
    explicit Turn(AgentLife& agent);
    ~Turn() { agent_.isBeingEnded_ = false; }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    AgentLife& agent_;
};

}  // namespace channel
