#include "cinterface/Refusal.h"

#include "facade/CauseTexts.h"

namespace cinterface {

Outcome failure(Cause cause, const std::string& detail) {
    Outcome outcome;
    outcome.cause = cause;
    outcome.sentence = causetexts::sentence(cause, detail.c_str());
    outcome.check = causetexts::of(cause).check;
    return outcome;
}

void refuse(Cause cause, const std::string& detail) {
    throw Refusal{failure(cause, detail)};
}

void refuseArgument(const std::string& detail) {
    refuse(Cause::badArgument, detail);
}

}  // namespace cinterface
