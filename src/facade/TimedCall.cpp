#include "facade/TimedCall.h"

#include <utility>

#include "common/Clock.h"

TimedCall::TimedCall(Impl& impl, AnswerTable& answers)
    : impl_(impl), answers_(answers), start_(common::now()) {}

TimedCall::~TimedCall() {
    if (queue_ == nullptr) return;
    if (answered_)
        answers_.giveBack(std::move(queue_));
    else if (waits_)
        queue_->giveUp();
}

void TimedCall::post(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request) {
    request_ = std::move(request);
    queue_ = answers_.take();
    Impl::ProtocolCmd command;
    command.kind = kind;
    command.data = request_;
    command.replyQueue = queue_;
    impl_.commandQueue.push(command);
}

bool TimedCall::await(std::uint32_t waitMs) {
    waits_ = waitMs != 0;
    answered_ = popWithin(waitMs);
    return answered_ && response_.result == Impl::CmdResponse::success;
}

bool TimedCall::popWithin(std::uint32_t waitMs) {
    const common::Moment start = common::now();
    std::uint64_t elapsed = 0;
    for (;;) {
        const std::uint32_t remaining = waitMs == common::Event::infinite
                                            ? waitMs
                                            : static_cast<std::uint32_t>(waitMs - elapsed);
        if (queue_->pop(response_, remaining)) return true;
        if (!queue_->pushed().exists()) return false;  // without an event nothing waits
        // The signal of an answer that was taken without waiting may arrive late and end the
        // wait of the next call; only the time decides.
        elapsed = common::now() - start;
        if (waitMs != common::Event::infinite && elapsed >= waitMs) return false;
    }
}

bool TimedCall::run(std::uint32_t kind, std::shared_ptr<Impl::CmdData> request,
                    std::uint32_t waitMs) {
    post(kind, std::move(request));
    return await(waitMs);
}

int TimedCall::elapsedMs() const {
    return static_cast<int>(static_cast<std::uint32_t>(common::now() - start_));
}
