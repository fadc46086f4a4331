#include "facade/TimedCall.h"

#include <utility>

#include "common/Clock.h"

TimedCall::TimedCall(Impl& impl, AnswerTable& answers)
    : impl_(impl), answers_(answers), start_(common::tickCount()) {}

void TimedCall::post(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request) {
    queue_ = &answers_.queueOfThisThread();
    request_ = std::move(request);
    Impl::ProtocolCmd command;
    command.kind = kind;
    command.data = request_;
    command.replyQueue = queue_;
    impl_.commandQueue.push(command);
}

bool TimedCall::await(std::uint32_t waitMs) {
    if (popWithin(waitMs)) return response_.result == Impl::CmdResponse::success;
    impl_.buryQueue(answers_.giveUpQueueOfThisThread(), request_);
    return false;
}

bool TimedCall::popWithin(std::uint32_t waitMs) {
    const std::uint32_t start = common::tickCount();
    std::uint32_t elapsed = 0;
    for (;;) {
        const std::uint32_t remaining = waitMs == Event::infinite ? waitMs : waitMs - elapsed;
        if (queue_->pop(response_, remaining)) return true;
        // The signal of an answer that was taken without waiting may arrive late and end the
        // wait of the next call; only the time decides.
        elapsed = common::tickCount() - start;
        if (waitMs != Event::infinite && elapsed >= waitMs) return false;
    }
}

bool TimedCall::run(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request,
                    std::uint32_t waitMs) {
    post(kind, std::move(request));
    return await(waitMs);
}

int TimedCall::elapsedMs() const {
    return static_cast<int>(static_cast<std::uint32_t>(common::tickCount() - start_));
}
