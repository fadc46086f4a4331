#pragma once

#include <utility>

#include "facade/Call.h"

/// A call that waits without a time limit and keeps the calling thread's windows alive meanwhile.
class UntimedCall : public Call {
public:
    using Call::Call;

    /// Posts the request with the host's monitor, which the agent may call until it has answered.
    template <channel::Kind kind, class... Args>
    void post(IProgressMonitor* monitor, Args&&... payload) {
        static_assert(channel::Operation<kind>::wait == channel::Wait::unlimited, "see the table");
        using Data = typename channel::Operation<kind>::Data;
        push({kind, std::make_shared<Data>(std::forward<Args>(payload)...), answers_, monitor});
    }

    /// True if the answer came and tells success; false as well once the agent has ended.
    bool await() {
        channel::CmdResponse response;
        while (!answers_->pop(response, pollMs))
            if (!pumpMessage()) return false;
        return response.result == channel::CmdResponse::success;
    }

private:
    static constexpr unsigned int pollMs = 1;

    const std::shared_ptr<channel::AnswerQueue> answers_ =
        std::make_shared<channel::AnswerQueue>(1);
};
