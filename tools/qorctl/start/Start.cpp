#include "start/Start.h"

#include <fmt/format.h>

#include <utility>

#include "doctor/KeyNames.h"
#include "doctor/KeyValues.h"
#include "HostPaths.h"
#include "Interrupt.h"

namespace qorctl::start {
namespace {

using namespace doctor;

// A program that has come to its end, or is about to listen, gets so long.
constexpr std::chrono::milliseconds patience(1500);
constexpr unsigned int lookAgainMs = 50;
constexpr std::size_t logLines = 3;

ExecutableFacts executableOf(const SettingsFacts& settings) {
    HostPlace host;
    host.program = paths::ofThisProgram();
    return ExecutableFacts::gather(settings["QORexecutable"].text, host);
}

Findings problemsIn(Findings all) {
    Findings problems;
    for (Finding& one : all)
        if (one.status == Status::problem) problems.push_back(std::move(one));
    return problems;
}

Refusal refusalOf(const Findings& problems) {
    Refusal refusal;
    refusal.what = problems.front().what;
    for (const Finding& one : problems) {
        if (&one != &problems.front()) refusal.details.push_back("also:  " + one.what);
        refusal.details.push_back("check: " + one.remedy);
    }
    return refusal;
}

}  // namespace

Start::Start(const std::string& settingsPath)
    : settings_(SettingsFacts::read(settingsPath)), executable_(executableOf(settings_)) {}

PeerFacts Start::lookAtPlace() const {
    return PeerFacts::gather(settings_, PeerFacts::Remote::leave);
}

std::optional<Refusal> Start::whyNotBegin() {
    if (settings_.file == SettingsFacts::File::missing) return std::nullopt;
    Findings problems = problemsIn(checkNames(settings_));
    if (!isReadable()) return refusalOf(problems);
    append(problems, problemsIn(checkValues(settings_)));
    append(problems, problemsIn(checkExecutable(executable_)));
    const PeerFacts peer = lookAtPlace();
    // Where QOR runs, the program that would start it does not matter, nor do keys that it does not
    // need to be found.
    if (!problems.empty() && !peer.isSomebodyThere()) return refusalOf(problems);
    if (!peer.isFound)
        return Refusal{fmt::format("{}: the address is not found: {}", peer.place, peer.reason),
                       {}};
    if (auto refusal = whyNotAlone(peer)) return refusal;
    return whyNobodyComes(peer);
}

std::optional<Refusal> Start::whyNotAlone(const PeerFacts& seen) {
    const auto end = Clock::now() + patience;
    for (PeerFacts peer = seen;; peer = lookAtPlace()) {
        claim_.emplace(peer.place);
        Holders others = peer.clients;
        if (!claim_->isOurs()) others = {Holder::of(claim_->process())};
        if (others.empty()) return std::nullopt;
        // It may just have come to its end.
        if (Clock::now() >= end || !interrupt::sleepMs(lookAgainMs))
            return Refusal{
                fmt::format("{} talks to the QOR of these settings ({})", namesOf(others),
                            peer.place),
                {"check: wait until that program has ended, or end it: QOR talks to one at a time"},
                true};
        claim_.reset();
    }
}

std::optional<Refusal> Start::whyNobodyComes(const PeerFacts& seen) const {
    if (!settings_["QORexecutable"].text.empty() || seen.isRemote) return std::nullopt;
    const auto end = Clock::now() + patience;
    for (PeerFacts peer = seen; !peer.isSomebodyThere(); peer = lookAtPlace())
        if (Clock::now() >= end || !interrupt::sleepMs(lookAgainMs))
            return Refusal{
                fmt::format("{}: nobody is there, and the settings name no executable", peer.place),
                {"check: start QOR before, or set QORexecutable"}};
    return std::nullopt;
}

void Start::begin() {
    begun_ = Clock::now();
    if (executable_.program.kind != ProgramFile::Kind::program) return;
    log_.emplace(settings_, executable_.resolved);
    child_.emplace(executable_.resolved);
}

std::optional<Refusal> Start::whyInVain() const {
    if (!isReadable()) return std::nullopt;
    const bool isLate = Clock::now() - begun_ >= patience;
    if (child_) {
        const auto end = child_->end();
        if (!end) return std::nullopt;
        const PeerFacts peer = lookAtPlace();
        // Somebody who is there may be QOR, and busy; one that has succeeded may have started it.
        if (!isLate && (peer.isSomebodyThere() || end->exitCode == 0u)) return std::nullopt;
        return ended(*end, peer);
    }
    if (!isLate || !settings_["QORexecutable"].text.empty()) return std::nullopt;
    const PeerFacts peer = lookAtPlace();
    if (peer.isRemote || !peer.isSomebodyThere()) return std::nullopt;
    return Refusal{fmt::format("{}: held by {}, which does not answer as QOR does", peer.place,
                               namesOf(peer.servers)),
                   {"check: end that program if it is not QOR; else see whether it shows a message "
                    "box, and whether it was started with these settings"}};
}

void Start::succeed() {
    if (child_) child_->lookNoMore();
}

bool Start::hasQorEnded() const {
    if (child_ && child_->isFound()) return child_->end().has_value();
    const PeerFacts peer = lookAtPlace();
    return !peer.isRemote && !peer.isSomebodyThere();
}

Refusal Start::ended(const ChildWatch::End& end, const PeerFacts& peer) const {
    Refusal refusal;
    refusal.hasEnded = true;
    refusal.what = executable_.resolved + " has ended";
    if (end.exitCode) refusal.what += fmt::format(" with exit code {}", *end.exitCode);
    if (peer.isSomebodyThere())
        refusal.what += fmt::format("; {}: held by {}, which does not answer as QOR does",
                                    peer.place, namesOf(peer.servers));
    const auto lines = log_->lastLines(logLines);
    for (const std::string& line : lines) refusal.details.push_back("its log: " + line);
    refusal.details.push_back(peer.isSomebodyThere()
                                  ? "check: end what holds the place, or choose another one in the "
                                    "settings, QOR's too"
                                  : "check: start it by hand with  -external_operating \"" +
                                        settings_.path + "\"  and see what it says");
    return refusal;
}

}  // namespace qorctl::start
