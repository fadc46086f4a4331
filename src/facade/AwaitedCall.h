#pragma once

#include <memory>
#include <utility>

#include "facade/Call.h"

/// A call that waits without a time limit for the answer to a request that others only post, or
/// wait for with their windows alive. It dispatches no messages.
class AwaitedCall : public Call {
public:
    using Call::Call;

    /// Posts the request and waits. True if the answer came and tells success; false as well once
    /// the agent has ended.
    template <channel::Kind kind, class... Args>
    bool run(Args&&... payload) {
        using Operation = channel::Operation<kind>;
        static_assert(
            Operation::wait == channel::Wait::none || Operation::wait == channel::Wait::unlimited,
            "who has a time-out waits by himself");
        using Data = typename Operation::Data;
        const auto answers = std::make_shared<channel::AnswerQueue>(1);
        push({kind, std::make_shared<Data>(std::forward<Args>(payload)...), answers, nullptr, 0});
        return await(*answers);
    }

private:
    bool await(channel::AnswerQueue& answers);
};
