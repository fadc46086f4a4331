#pragma once

#include <memory>
#include <utility>

#include "common/Moment.h"
#include "common/Pump.h"
#include "common/Verdict.h"
#include "facade/channel/ProtocolCmd.h"
#include "facade/FacadeState.h"

/// One call of an operation, with a share of all that it needs: whatever becomes of the facade
/// meanwhile, it touches nothing that is gone. At its end it notes how it ended, as the calling
/// thread's last outcome: that it worked, unless somebody has said that it failed.
class Call {
public:
    using Channel = channel::Channel;

    /// Starts the clock of the call.
    explicit Call(const FacadeState& state);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    Channel& channel() const { return *channel_; }
    const EolLog* eolLog() const { return eolLog_; }

    /// Without an agent an operation fails at once, and silently.
    bool isOperating() { return channel_->agent.isOperating() || failForLackOfAgent(); }
    /// The same without asking the system, see AgentLife.
    bool mayBeOperating() { return channel_->agent.mayBeOperating() || failForLackOfAgent(); }

    /// Takes at most one message of any kind from the calling thread's queue and dispatches it;
    /// then whether the agent still works.
    bool pumpMessage() {
        common::pumpOneMessage();
        return isOperating();
    }

    /// Posts a request that nobody waits for. Always true, the result of such an operation.
    template <channel::Kind kind, class... Args>
    bool postUnanswered(Args&&... payload) {
        using Operation = channel::Operation<kind>;
        static_assert(
            Operation::wait == channel::Wait::none || Operation::wait == channel::Wait::unlimited,
            "who has a time-out wants an answer");
        using Data = typename Operation::Data;
        push({kind, std::make_shared<Data>(std::forward<Args>(payload)...), nullptr, nullptr, 0});
        return true;
    }

    /// Of the answer, see qorcontrol::Outcome.
    bool mayBelongToEarlier() const { return verdict_.mayBelongToEarlier; }
    /// Without an answer of the agent's. Always true.
    bool succeed(bool mayBelongToEarlierOne) {
        verdict_.mayBelongToEarlier = mayBelongToEarlierOne;
        return true;
    }

    /// Milliseconds since the start.
    unsigned int elapsedMs() const;

protected:
    /// Gives the request its number.
    void push(channel::ProtocolCmd request);

    /// Whether the request has been pushed out of the queue.
    bool wasPushedOut(const common::Interest& request) const;
    /// Notes why there is no answer, of a call that does not wait any longer. Always false.
    bool failWithoutAnswer(const common::Interest& request);

    /// How it has ended, as far as is known by now; the last word counts. `reason`: what else is
    /// known, where that is no constant text.
    void note(const common::Verdict& verdict, std::shared_ptr<const std::string> reason = nullptr) {
        verdict_ = verdict;
        reason_ = std::move(reason);
    }
    /// By the agent's answer; true if that is a success.
    bool noteAnswer(const channel::CmdResponse& response);

    /// Always false.
    bool failForLackOfAgent();

private:
    const std::shared_ptr<Channel> channel_;
    const EolLog* const eolLog_;
    const common::Moment start_;
    const int exceptionsBefore_;
    common::Verdict verdict_;
    std::shared_ptr<const std::string> reason_;  // in place of the verdict's detail
    std::uint32_t lastNumberAtPush_ = 0;
    std::uint32_t emptiesAtPush_ = 0;
};

/// The whole of an operation that only posts.
template <channel::Kind kind, class... Args>
bool postOnly(const FacadeState& state, Args&&... payload) {
    Call call(state);
    return call.isOperating() && call.postUnanswered<kind>(std::forward<Args>(payload)...);
}
