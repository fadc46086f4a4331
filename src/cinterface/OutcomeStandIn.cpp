#include "qorcontrol/Outcome.h"

namespace qorcontrol {

Outcome lastOutcome() {
    Outcome outcome;
    outcome.cause = Cause::qorSilent;
    outcome.sentence = "It did not work.";
    outcome.check = "The trace.";
    return outcome;
}

}  // namespace qorcontrol
