#include "facade/TimedCall.h"

#include <algorithm>
#include <utility>

#include "common/SlicedWait.h"

namespace {

/// So often a watchful wait looks around.
constexpr std::uint32_t lookMs = 50;

constexpr const char* waitsForNobody =
    "with a time-out of 0 the call does not wait; a write is carried out all the same, unless "
    "later "
    "requests push it out of the full queue";
constexpr const char* giveTime = "Give a time-out if the result is wanted.";

}  // namespace

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

bool TimedCallBase::takeBack() {
    const bool isBegun = queue_->present() != qorcontrol::Cause::none;
    isLastLook_ = isBegun || !queue_->isEmpty();
    if (isLastLook_) return true;
    queue_->giveUp();
    queue_ = nullptr;
    return false;
}

bool TimedCallBase::await(std::uint32_t waitMs) {
    waits_ = waitMs != 0;
    answered_ = popWithin(isLastLook_ ? 0 : waitMs);
    if (answered_) return noteAnswer(response_);
    return waits_ ? failWithoutAnswer(*queue_) : failWithoutWaiting();
}

bool TimedCallBase::failWithoutWaiting() {
    if (isOperating()) note({qorcontrol::Cause::notReady, waitsForNobody, false, giveTime});
    return false;
}

bool TimedCallBase::popWithin(std::uint32_t waitMs) {
    const bool isWatchful = waits_ && channel().areWaitsWatchful;
    common::SlicedWait wait(waitMs);
    do {
        const std::uint32_t sliceMs = wait.sliceMs();
        if (queue_->pop(response_, isWatchful ? std::min(sliceMs, lookMs) : sliceMs)) return true;
        if (!queue_->pushed().exists()) return false;  // without an event nothing waits
        // The signal of an answer that was taken without waiting may arrive late and end the
        // wait of the next call; only the time decides.
        if (isWatchful && (wasPushedOut(*queue_) || !isOperating()))
            return queue_->pop(response_, 0);  // it may have come at the last moment
    } while (wait.goesOn());
    return false;
}
