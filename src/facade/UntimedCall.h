#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "facade/Call.h"

/// A call that waits without a time limit and keeps the calling thread's windows alive meanwhile.
class UntimedCall : public Call {
public:
    explicit UntimedCall(const FacadeState& state) : Call(state), connecting_(state.connecting) {}

    /// Posts the request with the host's monitor, which the agent may call until it has answered.
    template <channel::Kind kind, class... Args>
    void post(IProgressMonitor* monitor, Args&&... payload) {
        using Operation = channel::Operation<kind>;
        static_assert(Operation::wait == channel::Wait::unlimited, "see the table");
        using Data = typename Operation::Data;
        answers_ = std::make_shared<channel::AnswerQueue>(1);
        push({kind, std::make_shared<Data>(std::forward<Args>(payload)...), answers_, monitor, 0});
    }

    /// True if the answer came and tells success; false as well once the agent has ended.
    bool await() {
        channel::CmdResponse response;
        while (!answers_->pop(response, pollMs))
            if (!pumpMessage()) return false;
        return noteAnswer(response);
    }

    /// The facade's, see there.
    std::atomic<bool>& connecting() const { return *connecting_; }

private:
    static constexpr unsigned int pollMs = 1;

    const std::shared_ptr<std::atomic<bool>> connecting_;
    std::shared_ptr<channel::AnswerQueue> answers_;
};
