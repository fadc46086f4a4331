#include "start/Sight.h"

#include <fmt/format.h>

#include <algorithm>

namespace qorctl::start {

using doctor::Holder;
using doctor::namesOf;

bool Sight::isHeldByStranger() const {
    // Of a batch file nobody knows which program it starts.
    if (!isProgram || peer.servers.empty()) return false;
    return std::all_of(peer.servers.begin(), peer.servers.end(), [this](const Holder& now) {
        return now.isKnown() && !now.maybeIs(executable) &&
               std::any_of(before.begin(), before.end(),
                           [&](const Holder& then) { return then.process == now.process; });
    });
}

std::optional<Refusal> Sight::whyInVain() const {
    const bool hasFailed = end && end->exitCode.value_or(0) != 0;
    const bool isForGood = (hasFailed && peer.isNobodyThere()) || (isLate && isHeldByStranger());
    if (!isForGood && !isLate) return std::nullopt;
    if (!end && peer.servers.empty()) return std::nullopt;
    Refusal refusal = end ? ended() : silent();
    refusal.isForGood = isForGood;
    return refusal;
}

Refusal Sight::silent() const {
    return {fmt::format("{}: held by {}, which does not answer as QOR does", peer.place,
                        namesOf(peer.servers)),
            {"check: end that program if it is not QOR; else see whether it shows a message box, "
             "and whether it was started with these settings"}};
}

Refusal Sight::ended() const {
    Refusal refusal;
    refusal.hasEnded = true;
    refusal.what = executable + " has ended";
    if (end->exitCode) refusal.what += fmt::format(" with exit code {}", *end->exitCode);
    if (!peer.servers.empty()) refusal.what += "; " + silent().what;
    for (const std::string& line : lastLines) refusal.details.push_back("its log: " + line);
    refusal.details.push_back(peer.servers.empty()
                                  ? "check: start it by hand with  -external_operating \"" +
                                        settingsPath + "\"  and see what it says"
                                  : "check: end what holds the place, or choose another one in the "
                                    "settings, QOR's too");
    return refusal;
}

}  // namespace qorctl::start
