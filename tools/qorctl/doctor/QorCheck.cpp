#include "doctor/QorCheck.h"

#include <fmt/format.h>

#include <algorithm>

namespace qorctl::doctor {
namespace {

const char* const placeId = "qor.place";

// So long the library waits for a QOR that runs already before it starts another one.
constexpr double startsAnotherMs = 200;

Finding checkEmptyPlace(const PeerFacts& peer, const std::string& executable) {
    const std::string nobody = fmt::format("{}: nobody is there", peer.place);
    if (peer.isRemote)
        return Finding::problem(placeId, fmt::format("{}: takes no connection", peer.place),
                                "start QOR there; look at the firewalls between");
    if (!executable.empty()) return Finding::ok(placeId, nobody + ", so a host starts QOR");
    return Finding::problem(placeId, nobody + ", and the settings name no executable",
                            "start QOR before the host, or set QORexecutable");
}

/// Somebody is there and was asked, in vain.
Finding checkSilentPlace(const PeerFacts& peer, const std::string& executable) {
    const std::string names = !peer.isTold ? "taken" : "held by " + namesOf(peer.servers);
    const std::string what =
        fmt::format("{}: {}, which does not answer as QOR does", peer.place, names);
    const bool maybeQor =
        std::any_of(peer.servers.begin(), peer.servers.end(),
                    [&](const Holder& one) { return one.isKnown() && one.maybeIs(executable); });
    if (maybeQor)
        return Finding::problem(placeId, what,
                                "close a message box that it shows, or end it; check that it was "
                                "started with these settings");
    return Finding::problem(
        placeId, what,
        peer.isTcp ? "end that program, or choose another TcpPort, in QOR's settings too"
                   : "end that program, or choose another ServerPipeName, in QOR's settings too");
}

Finding checkHeldPlace(const PeerFacts& peer, const QorAnswers& answers,
                       const std::string& executable) {
    if (answers.isAsked && answers.times.empty()) return checkSilentPlace(peer, executable);
    if (!peer.isTold) return Finding::ok(placeId, peer.place + ": takes connections");
    const std::string what = fmt::format("{}: held by {}", peer.place, namesOf(peer.servers));
    if (peer.servers.size() > 1)
        return Finding::warning(placeId, what, "end all but one: which of them is found is luck");
    if (!executable.empty() && !peer.servers.front().maybeIs(executable))
        return Finding::warning(placeId, what + ", not by the executable of the settings",
                                "end it if it is not the QOR that the host is meant to use");
    return Finding::ok(placeId, what);
}

Findings checkClients(const PeerFacts& peer) {
    const std::string id = "qor.client";
    if (peer.clients.empty()) return {};
    const std::string names = namesOf(peer.clients);
    if (peer.isTcp)
        return {Finding::problem(id,
                                 fmt::format("QOR talks to {} already, so it was not asked", names),
                                 "end that host before another one begins")};
    return {Finding::problem(
        id, fmt::format("{}: held by {}, which would get QOR's answers", peer.clientPlace, names),
        "end that program, or choose another ClientPipeName, in QOR's settings too")};
}

Findings checkStart(const QorAnswers& answers) {
    const std::string id = "qor.start";
    if (!answers.isStartTried) return {};
    if (answers.startFailure.empty())
        return {Finding::ok(id, fmt::format("QOR was started, it answered after {:.0f} ms and was "
                                            "told to end",
                                            answers.firstMs))};
    return {Finding::problem(id, answers.startFailure,
                             "start QOR by hand with  -external_operating \"SETTINGS\"  and see "
                             "what it says")};
}

std::string shownTimes(const std::vector<double>& times) {
    std::string text;
    for (const double ms : times) text += fmt::format("{}{:.1f}", text.empty() ? "" : ", ", ms);
    return text;
}

Findings checkAnswers(const QorAnswers& answers) {
    const std::string id = "qor.answer";
    if (!answers.isAsked || answers.pings == 0) return {};
    if (answers.times.empty())
        return {Finding::problem(id, "no answer to a ping",
                                 "end what is there and let the host start QOR")};
    const std::string what = fmt::format("{} of {} pings answered, in ms: {}", answers.times.size(),
                                         answers.pings, shownTimes(answers.times));
    if (answers.times.size() < answers.pings)
        return {Finding::warning(id, what, "see what keeps QOR busy; use longer time-outs")};
    if (*std::max_element(answers.times.begin(), answers.times.end()) > startsAnotherMs)
        return {Finding::warning(id, what,
                                 "let QOR come to rest before the host begins: it starts another "
                                 "one where the first has not answered after 200 ms")};
    return {Finding::ok(id, what)};
}

Findings checkDelay(const QorAnswers& answers) {
    const bool isDelayed = answers.requestMs >= QorAnswers::confirmedMs && answers.noDelayMs > 0 &&
                           answers.noDelayMs * 2 <= answers.requestMs;
    if (!isDelayed) return {};
    return {Finding::warning(
        "qor.delay",
        fmt::format("a request for data takes {:.0f} ms, and {:.0f} ms if it need not wait for the "
                    "confirmation of what left before: QOR acknowledges before it sends its data",
                    answers.requestMs, answers.noDelayMs),
        "use the option: --tcp-no-delay of qorctl, setTcpNoDelay in C++, QorSetTcpNoDelay in C")};
}

}  // namespace

Findings checkQor(const PeerFacts& peer, const QorAnswers& answers, const std::string& executable) {
    if (!peer.isFound)
        return {Finding::problem(
            placeId, fmt::format("{}: the address is not found: {}", peer.place, peer.reason),
            "write ServerIp as a number such as 127.0.0.1, with nothing behind it")};
    if (!peer.isUsable) return {};  // the settings' own findings say so
    Findings findings = {peer.isSomebodyThere() ? checkHeldPlace(peer, answers, executable)
                                                : checkEmptyPlace(peer, executable)};
    append(findings, checkClients(peer));
    append(findings, checkStart(answers));
    append(findings, checkAnswers(answers));
    append(findings, checkDelay(answers));
    return findings;
}

bool mayBeAsked(const PeerFacts& peer) {
    return peer.isUsable && peer.isFound && peer.isSomebodyThere() && peer.clients.empty();
}

}  // namespace qorctl::doctor
