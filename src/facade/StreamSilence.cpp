#include "facade/StreamSilence.h"

#include "facade/CauseTexts.h"

using qorcontrol::Cause;

sinkstreams::Silence sinkstreams::silenceOf(const common::Verdict& registration) {
    if (registration.cause == Cause::unknownName)
        return {Cause::unknownName, "one of the names of the stream"};
    Silence silence{Cause::notReady, "QOR has sent none in this time"};
    if (registration.cause == Cause::none || registration.cause == Cause::notReady) return silence;
    std::string why = causetexts::sentence(registration.cause, registration.detail);
    why.erase(why.find_last_not_of('.') + 1);
    silence.detail += ", and the names could not be registered: " + why;
    silence.check =
        *registration.check != '\0' ? registration.check : causetexts::of(registration.cause).check;
    return silence;
}
