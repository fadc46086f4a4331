#include "behaviour/Outcome.h"

#include <utility>

namespace simulator {

Outcome Outcome::refused(std::string reason) {
    Outcome outcome;
    outcome.refusal = std::move(reason);
    return outcome;
}

Outcome Outcome::data(std::string payload) {
    Outcome outcome;
    outcome.answer = std::move(payload);
    outcome.answerIsData = true;
    return outcome;
}

Outcome Outcome::unlessRefused(Refusal refusal, std::string payload) {
    Outcome outcome;
    if (refusal) {
        outcome.refusal = std::move(refusal);
    } else {
        outcome.answer = std::move(payload);
    }
    return outcome;
}

}  // namespace simulator
