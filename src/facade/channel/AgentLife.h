#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "common/Guarded.h"
#include "common/Thread.h"
#include "qorcontrol/Cause.h"

namespace channel {

/// Why there is no agent any more.
struct AgentEnd {
    qorcontrol::Cause cause = qorcontrol::Cause::agentEnded;
    std::string reason;      ///< for the operator; it may have several lines
    const char* check = "";  ///< what to check, if not what the cause says; a constant text
};

/// The agent's thread, and what its two sides tell each other about its end. Anybody may ask; all
/// of it is atomic, but for the reason, which locks itself.
class AgentLife {
public:
    /// Whether the agent still works: it has not failed, and the system says that its thread runs
    /// (which can end without returning).
    bool isOperating() const;

    /// The same without asking the system, which costs more than a look into the value cache.
    bool mayBeOperating() const { return thread_.isRunning() && !failed_; }

    /// The facade's wish; the agent ends after the request that it is at.
    void askToEnd() { mayGoOn_ = false; }
    bool mayGoOn() const { return mayGoOn_; }

    /// Noted by an agent that has failed: it works no more, and looks after itself.
    void noteFailure() { failed_ = true; }
    bool hasFailed() const { return failed_; }

    /// Why it ends, told before anybody can see that it does. The first reason stays: what comes
    /// behind it is its consequence. Without memory there is none.
    void noteEnd(qorcontrol::Cause cause, const char* reason, const char* check = "") noexcept;
    /// Null if nobody has told one.
    std::shared_ptr<const AgentEnd> end() { return *end_.lock(); }

    /// The facade's part, see common::Thread: it starts the thread, and one turn at a time awaits
    /// its end and lets it go.
    class Turn;
    bool start(common::Thread::Entry entry, void* share) { return thread_.start(entry, share); }
    bool hasHandle() const { return thread_.hasHandle(); }
    common::ThreadState state() const { return thread_.state(); }
    bool letGo() { return thread_.close(); }

private:
    common::Thread thread_;
    std::atomic<bool> mayGoOn_{true};
    std::atomic<bool> failed_{false};
    std::atomic<bool> isBeingEnded_{false};
    common::Guarded<std::shared_ptr<const AgentEnd>> end_;
};

/// For as long as it lives. Others wait for theirs by sleeping: a lock must not be held so long.
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
