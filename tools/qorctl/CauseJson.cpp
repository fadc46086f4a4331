#include "CauseJson.h"

#include "JsonText.h"

namespace qorctl {

using qorcontrol::Cause;

const char* nameOf(Cause cause) {
    switch (cause) {
        case Cause::none:
            return "none";
        case Cause::agentEnded:
            return "agentEnded";
        case Cause::agentBusy:
            return "agentBusy";
        case Cause::pushedOut:
            return "pushedOut";
        case Cause::noConnection:
            return "noConnection";
        case Cause::qorSilent:
            return "qorSilent";
        case Cause::noData:
            return "noData";
        case Cause::refused:
            return "refused";
        case Cause::unknownName:
            return "unknownName";
        case Cause::kwpBeforeConnect:
            return "kwpBeforeConnect";
        case Cause::cancelled:
            return "cancelled";
        case Cause::connectReported:
            return "connectReported";
        case Cause::ecuOffline:
            return "ecuOffline";
        case Cause::resultTooLarge:
            return "resultTooLarge";
        case Cause::badArgument:
            return "badArgument";
        case Cause::outOfMemory:
            return "outOfMemory";
        case Cause::requestTooLarge:
            return "requestTooLarge";
        case Cause::qorChanged:
            return "qorChanged";
        case Cause::badAnswer:
            return "badAnswer";
        case Cause::systemFailure:
            return "systemFailure";
        case Cause::badHandle:
            return "badHandle";
        case Cause::notReady:
            return "notReady";
        case Cause::wrongOrder:
            return "wrongOrder";
    }
    return "unknown";  // of a library that is newer than this program
}

nlohmann::json jsonOf(const qorcontrol::Outcome& told) {
    if (told.cause == Cause::none) return nullptr;
    return {{"code", static_cast<int>(told.cause)},
            {"name", nameOf(told.cause)},
            {"sentence", utf8Of(told.sentence)},
            {"check", utf8Of(told.check)}};
}

}  // namespace qorctl
