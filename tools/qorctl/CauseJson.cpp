#include "CauseJson.h"

#include <cstddef>

#include "JsonText.h"

namespace qorctl {
namespace {

using qorcontrol::Cause;

/// In the order of the numbers.
constexpr const char* names[] = {
    "none",        "agentEnded",      "agentBusy",  "pushedOut",      "noConnection",
    "qorSilent",   "noData",          "refused",    "unknownName",    "kwpBeforeConnect",
    "cancelled",   "connectReported", "ecuOffline", "resultTooLarge", "badArgument",
    "outOfMemory", "requestTooLarge", "qorChanged", "badAnswer",      "systemFailure",
    "badHandle",   "notReady",        "wrongOrder",
};
static_assert(sizeof names / sizeof names[0] == static_cast<std::size_t>(Cause::wrongOrder) + 1,
              "a name per cause");

}  // namespace

const char* nameOf(Cause cause) {
    const auto number = static_cast<std::size_t>(cause);
    // A library that is newer than this program knows more.
    return number < sizeof names / sizeof names[0] ? names[number] : "unknown";
}

nlohmann::json jsonOf(const qorcontrol::Outcome& told) {
    if (told.cause == Cause::none) return nullptr;
    return {{"code", static_cast<int>(told.cause)},
            {"name", nameOf(told.cause)},
            {"sentence", utf8Of(told.sentence)},
            {"check", utf8Of(told.check)}};
}

}  // namespace qorctl
