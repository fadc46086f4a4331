#include "start/Start.h"

#include <fmt/format.h>

#include <utility>

#include "HostPaths.h"
#include "Interrupt.h"
#include "start/Sight.h"

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

Refusal occupied(const PeerFacts& peer, const Holders& others, bool isOfOurKind) {
    Refusal refusal;
    refusal.isOccupied = true;
    if (peer.isTcp || isOfOurKind) {
        refusal.what =
            fmt::format("{} talks to the QOR of these settings ({})", namesOf(others), peer.place);
        refusal.details = {
            "check: wait until that program has ended, or end it: QOR talks to one at a time"};
    } else {
        refusal.what = fmt::format("{}: held by {}, which would get QOR's answers",
                                   peer.clientPlace, namesOf(others));
        refusal.details = {
            "check: wait until that program has ended, or end it, or choose another "
            "ClientPipeName, in QOR's settings too"};
    }
    return refusal;
}

}  // namespace

Start::Start(const std::string& settingsPath)
    : settings_(SettingsFacts::read(settingsPath)),
      executable_(executableOf(settings_)),
      objections_(settings_, executable_) {}

PeerFacts Start::lookAtPlace() const {
    return PeerFacts::gather(settings_, PeerFacts::Remote::leave);
}

std::optional<Refusal> Start::whyNotBegin() {
    if (settings_.file == SettingsFacts::File::missing) return std::nullopt;
    const PeerFacts peer = isReadable() ? lookAtPlace() : PeerFacts();
    before_ = peer.servers;
    if (auto refusal = objections_.whyNever(peer)) return refusal;
    if (!peer.isFound)
        return asReason({fmt::format("{}: the address is not found: {}", peer.place, peer.reason)});
    if (auto refusal = whyNotAlone(peer)) return refusal;
    if (auto refusal = whyNobodyComes(peer)) return asReason(std::move(*refusal));
    return std::nullopt;
}

std::optional<Refusal> Start::whyNotAlone(const PeerFacts& seen) {
    const auto end = Clock::now() + patience;
    for (PeerFacts peer = seen;; peer = lookAtPlace()) {
        claim_.emplace(peer.key);
        if (claim_->isOurs() && peer.clients.empty()) return std::nullopt;
        // It may just have come to its end.
        if (Clock::now() >= end || !interrupt::sleepMs(lookAgainMs))
            return claim_->isOurs() ? occupied(peer, peer.clients, false)
                                    : occupied(peer, {Holder::of(claim_->process())}, true);
        claim_.reset();
    }
}

std::optional<Refusal> Start::whyNobodyComes(const PeerFacts& seen) const {
    if (!settings_["QORexecutable"].text.empty()) return std::nullopt;
    const auto end = Clock::now() + patience;
    for (PeerFacts peer = seen; peer.isNobodyThere(); peer = lookAtPlace())
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
    const auto end = child_ ? child_->end() : std::nullopt;
    if (!end && !isLate) return std::nullopt;
    Sight sight;
    sight.peer = lookAtPlace();
    sight.before = before_;
    sight.settingsPath = settings_.path;
    sight.executable = executable_.resolved;
    sight.isProgram = child_.has_value();
    sight.isLate = isLate;
    sight.end = end;
    if (end) sight.lastLines = log_->lastLines(logLines);
    return sight.whyInVain();
}

void Start::succeed() {
    if (!child_) return;
    child_->lookNoMore();
    wasHandedOver_ = child_->end().has_value();
}

std::optional<std::string> Start::stillRunning() const {
    return child_ ? child_->stillRunning() : std::nullopt;
}

bool Start::hasQorEnded() const {
    if (child_ && child_->isFound() && !wasHandedOver_) return child_->end().has_value();
    return lookAtPlace().isNobodyThere();
}

}  // namespace qorctl::start
