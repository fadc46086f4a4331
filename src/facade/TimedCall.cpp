#include "facade/TimedCall.h"

#include <utility>

#include "common/SlicedWait.h"

TimedCallBase::TimedCallBase(const FacadeState& state, channel::AnswerTable& answers,
                             const char* name)
    : Call(state), answers_(answers), name_(name) {}

TimedCallBase::~TimedCallBase() {
    if (queue_ == nullptr) return;
    if (answered_)
        answers_.giveBack(std::move(queue_));
    else if (waits_)
        queue_->giveUp();
}

void TimedCallBase::post(channel::Kind kind, std::shared_ptr<channel::CmdData> request) {
    queue_ = answers_.take();
    push({kind, std::move(request), queue_, nullptr, 0});
}

bool TimedCallBase::await(std::uint32_t waitMs) {
    waits_ = waitMs != 0;
    answered_ = popWithin(waitMs);
    if (answered_) return noteAnswer(response_);
    return failWithoutAnswer(*queue_);
}

bool TimedCallBase::popWithin(std::uint32_t waitMs) {
    common::SlicedWait wait(waitMs);
    do {
        if (queue_->pop(response_, wait.sliceMs())) return true;
        if (!queue_->pushed().exists()) return false;  // without an event nothing waits
        // The signal of an answer that was taken without waiting may arrive late and end the
        // wait of the next call; only the time decides.
    } while (wait.goesOn());
    return false;
}
