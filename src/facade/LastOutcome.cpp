#include "facade/LastOutcome.h"

#include <atomic>
#include <new>
#include <utility>

#include "common/PerThread.h"
#include "facade/CauseTexts.h"
#include "qorcontrol/Outcome.h"

namespace {

/// Nothing is told of a thread that has no place yet, but that one could not be made.
std::atomic<bool> placeWasMissing{false};

struct Kept {
    bool isThere = false;
    lastoutcome::Ended ended;
};

common::PerThread<Kept>& table() {
    static common::PerThread<Kept> kept;
    return kept;
}

qorcontrol::Outcome withoutTexts(const lastoutcome::Ended& ended) {
    qorcontrol::Outcome outcome;
    outcome.cause = ended.verdict.cause;
    outcome.mayBelongToEarlier = ended.verdict.mayBelongToEarlier;
    outcome.elapsedMs = ended.elapsedMs;
    return outcome;
}

}  // namespace

void lastoutcome::note(Ended ended) noexcept {
    try {
        table().exchange({true, std::move(ended)});
    } catch (const std::bad_alloc&) {
        // A thread's first one. All that follow have their place.
        placeWasMissing = true;
    }
}

qorcontrol::Outcome qorcontrol::lastOutcome() {
    Outcome outcome;
    try {
        const Kept kept = table().get();
        outcome = withoutTexts(kept.ended);
        if (!kept.isThere && placeWasMissing) outcome.cause = Cause::outOfMemory;
        if (outcome.cause == Cause::none) return outcome;
        const std::string* const reason = kept.ended.reason.get();
        outcome.sentence = causetexts::sentence(
            outcome.cause, reason != nullptr ? reason->c_str() : kept.ended.verdict.detail);
        const char* const check = kept.ended.verdict.check;
        outcome.check = *check != '\0' ? check : causetexts::of(outcome.cause).check;
    } catch (const std::bad_alloc&) {
        outcome.cause = Cause::outOfMemory;
        outcome.sentence.clear();
        outcome.check.clear();
    }
    return outcome;
}
