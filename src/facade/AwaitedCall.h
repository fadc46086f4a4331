#pragma once

#include <functional>
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
        return await(*answers, nullptr);
    }

    /// The same with a monitor, which the request itself keeps: the agent may ask it for as long as
    /// it is at the request, whatever has become of the caller. `isWanted` is asked all the while;
    /// what is not wanted any more and has not been begun is given up: the agent leaves it out.
    template <channel::Kind kind, class... Args>
    bool runWatched(std::shared_ptr<IProgressMonitor> monitor,
                    const std::function<bool()>& isWanted, Args&&... payload) {
        using Operation = channel::Operation<kind>;
        static_assert(Operation::wait == channel::Wait::unlimited, "see the table");
        using Data = typename Operation::Data;
        const auto watched = std::make_shared<Watched>(std::move(monitor));
        const std::shared_ptr<channel::AnswerQueue> answers(watched, &watched->answers);
        push({kind, std::make_shared<Data>(std::forward<Args>(payload)...), answers,
              watched->monitor.get(), 0});
        return await(*answers, isWanted);
    }

private:
    struct Watched {
        explicit Watched(std::shared_ptr<IProgressMonitor> asked) : monitor(std::move(asked)) {}

        const std::shared_ptr<IProgressMonitor> monitor;
        channel::AnswerQueue answers{1};
    };

    bool await(channel::AnswerQueue& answers, const std::function<bool()>& isWanted);
    bool giveUpUnlessBegun(channel::AnswerQueue& answers);
};
