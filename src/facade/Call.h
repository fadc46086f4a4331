#pragma once

#include <memory>
#include <utility>

#include "common/Pump.h"
#include "facade/channel/ProtocolCmd.h"
#include "facade/FacadeState.h"

/// One call of an operation, with a share of all that it needs: whatever becomes of the facade
/// meanwhile, it touches nothing that is gone.
class Call {
public:
    using Channel = channel::Channel;

    explicit Call(const FacadeState& state) : channel_(state.channel), eolLog_(state.eolLog) {}

    Channel& channel() const { return *channel_; }
    const EolLog* eolLog() const { return eolLog_; }

    /// Without an agent an operation fails at once, and silently.
    bool isOperating() const { return channel_->agent.isOperating(); }

    /// Takes at most one message of any kind from the calling thread's queue and dispatches it;
    /// then whether the agent still works.
    bool pumpMessage() const {
        common::pumpOneMessage();
        return isOperating();
    }

    /// Posts a request that nobody waits for. Always true, the result of such an operation.
    template <channel::Kind kind, class... Args>
    bool postUnanswered(Args&&... payload) const {
        using Operation = channel::Operation<kind>;
        static_assert(
            Operation::wait == channel::Wait::none || Operation::wait == channel::Wait::unlimited,
            "who has a time-out wants an answer");
        using Data = typename Operation::Data;
        push({kind, std::make_shared<Data>(std::forward<Args>(payload)...), nullptr, nullptr});
        return true;
    }

protected:
    void push(const channel::ProtocolCmd& request) const { channel_->commandQueue.push(request); }

private:
    const std::shared_ptr<Channel> channel_;
    const EolLog* const eolLog_;
};

/// The whole of an operation that only posts.
template <channel::Kind kind, class... Args>
bool postOnly(const FacadeState& state, Args&&... payload) {
    const Call call(state);
    return call.isOperating() && call.postUnanswered<kind>(std::forward<Args>(payload)...);
}
