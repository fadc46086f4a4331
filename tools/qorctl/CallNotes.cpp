#include "CallNotes.h"

#include <algorithm>

#include "CauseJson.h"

namespace qorctl {

using qorcontrol::Cause;

bool CallNotes::note(bool worked) {
    return note(worked, {});
}

bool CallNotes::note(bool worked, const std::string& name) {
    qorcontrol::Outcome last = qorcontrol::lastOutcome();
    const bool mayBelongToEarlier = told_.mayBelongToEarlier || last.mayBelongToEarlier;
    if (!worked) {
        failed_.push_back({name, last.cause});
        if (told_.cause == Cause::none) told_ = std::move(last);
    }
    told_.mayBelongToEarlier = mayBelongToEarlier;
    return worked;
}

Outcome CallNotes::success(std::string text) const {
    Outcome outcome = Outcome::success(std::move(text));
    outcome.told.mayBelongToEarlier = told_.mayBelongToEarlier;
    return outcome;
}

Outcome CallNotes::failure(std::string reason) const {
    return {false, std::move(reason), told_, {}};
}

Outcome CallNotes::failureOfNames(const std::string& what) const {
    const bool areSame = std::all_of(failed_.begin(), failed_.end(), [this](const Failed& one) {
        return one.cause == failed_.front().cause;
    });
    std::string text = what;
    for (const Failed& one : failed_) {
        text += (&one == &failed_.front() ? ": " : ", ") + one.name;
        if (!areSame && one.cause != Cause::none)
            text += std::string(" (") + nameOf(one.cause) + ")";
    }
    return failure(std::move(text));
}

}  // namespace qorctl
