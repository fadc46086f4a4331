#include "facade/Call.h"

#include <exception>
#include <utility>

#include "common/Clock.h"
#include "facade/LastOutcome.h"

using qorcontrol::Cause;

Call::Call(const FacadeState& state)
    : channel_(state.channel),
      eolLog_(state.eolLog),
      start_(common::now()),
      exceptionsBefore_(std::uncaught_exceptions()) {}

Call::~Call() {
    // No other exception leaves an operation.
    if (std::uncaught_exceptions() > exceptionsBefore_) {
        verdict_.cause = Cause::outOfMemory;
        reason_ = nullptr;
    }
    lastoutcome::note({verdict_, std::move(reason_), elapsedMs()});
}

unsigned int Call::elapsedMs() const {
    return static_cast<unsigned int>(common::now() - start_);
}

void Call::push(channel::ProtocolCmd request) {
    request.number = channel_->backlog.nextNumber();
    channel_->commandQueue.push(request);
    lastNumberAtPush_ = channel_->backlog.lastNumber();
    emptiesAtPush_ = channel_->backlog.empties();
}

bool Call::wasPushedOut(const common::Interest& request) const {
    // In this order: what the agent takes it also begins, before it looks for the next one.
    const channel::Backlog& backlog = channel_->backlog;
    return (backlog.hasPassed(lastNumberAtPush_) || backlog.wasEmptySince(emptiesAtPush_)) &&
           request.present() == Cause::none;
}

bool Call::failWithoutAnswer(const common::Interest& request) {
    if (!isOperating()) return false;
    const Cause present = request.present();
    if (present != Cause::none)
        note({present, "", false});
    else
        note({wasPushedOut(request) ? Cause::pushedOut : Cause::agentBusy, "", false});
    return false;
}

bool Call::noteAnswer(const channel::CmdResponse& response) {
    const bool succeeded = response.result == channel::CmdResponse::success;
    note(response.verdict);
    if (succeeded)
        verdict_.cause = Cause::none;
    else if (verdict_.cause == Cause::none)
        verdict_.cause = Cause::badAnswer;  // of an agent that knows no such request
    return succeeded;
}

bool Call::failForLackOfAgent() {
    note({Cause::agentEnded, "", false});
    const std::shared_ptr<const channel::AgentEnd> end = channel_->agent.end();
    if (end == nullptr) return false;
    note({end->cause, "", false, end->check}, {end, &end->reason});
    return false;
}
