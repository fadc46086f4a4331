#include "cinterface/Shell.h"

namespace cinterface {

Outcome outcomeOf(bool succeeded) {
    Outcome outcome = qorcontrol::lastOutcome();
    if (succeeded) {
        outcome.cause = Cause::none;
        outcome.sentence.clear();
        outcome.check.clear();
    } else if (outcome.cause == Cause::none) {
        outcome = systemFailure("the operation failed without a cause");
    }
    return outcome;
}

int noteCall(Outcome&& outcome, common::Moment start) noexcept {
    const int cause = static_cast<int>(outcome.cause);
    try {
        Outcome& last = process().threads.get().lastCall;
        last = std::move(outcome);
        last.elapsedMs = static_cast<unsigned int>(common::now() - start);
    } catch (const std::bad_alloc&) {
        // The first call of a thread for which there is no room. The host still has the number.
    }
    return cause;
}

Outcome outOfMemory() {
    return failure(Cause::outOfMemory, "");
}

Outcome systemFailure(const char* what) {
    return failure(Cause::systemFailure, what);
}

std::shared_ptr<Session> sessionOf(QorHandle handle) {
    auto session = process().sessions.find(numberOf(handle));
    if (session == nullptr) refuseHandle();
    return session;
}

void refuseHandle() {
    refuse(Cause::badHandle, "");
}

Outcome with(Outcome outcome, Outcome more) {
    if (outcome.cause != Cause::none) return outcome;
    more.mayBelongToEarlier = outcome.mayBelongToEarlier;
    return more;
}

}  // namespace cinterface
