#include "Session.h"

#include <fmt/format.h>

#include <chrono>
#include <CLI/CLI.hpp>
#include <thread>

#include "Activity.h"
#include "CallNotes.h"
#include "ConnectMonitor.h"
#include "HostPaths.h"
#include "Interrupt.h"
#include "Numbers.h"
#include "qorcontrol/TcpNoDelay.h"

namespace qorctl {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The library itself gives QOR 10 s to come up.
constexpr std::chrono::seconds startLimit(15);
// So long QOR may need to go on behind a message box.
constexpr std::chrono::milliseconds boxGrace(1500);
constexpr unsigned int startPingMs = 250;
constexpr unsigned int betweenPingsMs = 20;
// Ticks of the system's clock are up to 20 ms apart.
constexpr unsigned int clockGrainMs = 40;
// So long the library waits for its agent thread before it lets it go.
constexpr std::chrono::milliseconds shutdownLimit(5000);
// So long a QOR that was told to end may need for it.
constexpr std::chrono::milliseconds endPatience(2000);

std::string checkTracePath(const std::string& path) {
    const std::string wanted = ".log";
    const bool fits = path.size() > wanted.size() &&
                      path.compare(path.size() - wanted.size(), wanted.size(), wanted) == 0;
    return fits ? std::string() : path + " does not end in .log, as the library's traces do";
}

BoxAnswers boxAnswersOf(const SessionOptions& options) {
    return options.boxAnswers.empty() ? BoxAnswers() : BoxAnswers(options.boxAnswers);
}

SessionOptions withAbsolutePaths(SessionOptions options) {
    options.settingsPath = paths::absolute(options.settingsPath);
    if (!options.tracePath.empty()) options.tracePath = paths::absoluteFile(options.tracePath);
    return options;
}

}  // namespace

void SessionOptions::declare(CLI::App& command) {
    command
        .add_option("SETTINGS", settingsPath, "QOR's settings file (INI, section CommonSettings)")
        ->required()
        ->check(paths::whyNotAbsolute);
    command
        .add_option("--trace", tracePath, "Trace to FILE.log and take trace settings from FILE.cfg")
        ->type_name("FILE.log")
        ->check(checkTracePath)
        ->check(paths::whyNotAbsolute);
    command
        .add_option("--transport", transport,
                    "Speak over this transport whatever the settings choose: tcp or window")
        ->check(CLI::IsMember({"tcp", "window"}));
    whole(command.add_option("--timeout", timeoutMs, "Time that QOR has for one request"))
        ->type_name("MS")
        ->check(CLI::Range(1u, 60000u))
        ->capture_default_str();
    whole(command.add_option("--refresh", refreshMs,
                             "Refresh period; a value is reused for half of it"))
        ->type_name("MS")
        ->check(CLI::Range(100u, 5000u))
        ->capture_default_str();
    command.add_flag("--tcp-no-delay", tcpNoDelay,
                     "Send at once over TCP: for a QOR that acknowledges before it sends its data");
    command
        .add_option("--answer-boxes", boxAnswers,
                    "Answer QOR's message boxes with these, the first that a box has, else with "
                    "its default button, and do not show them")
        ->type_name("yes,ok,...")
        ->check(whyNoAnswers);
}

std::string SessionOptions::hostPath() const {
    return tracePath.empty() ? paths::ofThisProgram() : tracePath;
}

Session::Session(const SessionOptions& options, Console& console)
    : options_(withAbsolutePaths(options)),
      settings_(options_.settingsPath, options_.transport),
      console_(console),
      trace_(options_.hostPath()),
      log_(console),
      start_(settings_.path()) {}

Outcome Session::start() {
    for (const std::string& note : start_.notes()) console_.line("note    " + note);
    if (auto refusal = start_.whyNotBegin()) return refused(std::move(*refusal));
    startLibrary();
    Outcome outcome = awaitQor();
    if (!outcome.ok) endInVain(outcome);
    return outcome;
}

void Session::endInVain(Outcome& outcome) {
    // Without QOR the library is at its start for seconds still, and nobody waits for it: it ends
    // with this process.
    if (isQorGone_) {
        boxes_.reset();
        static_cast<void>(facade_.release());
        return;
    }
    const Clock::time_point begun = Clock::now();
    facade_->shutdown();
    boxes_->end();
    const bool wasLetGo = Clock::now() - begun >= shutdownLimit;
    const Clock::time_point end = Clock::now() + (wasLetGo || isAgentGone_ ? 0ms : endPatience);
    // (A sleep that Ctrl-C ends is none any more.)
    while (start_.stillRunning() && Clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(betweenPingsMs));
    if (const auto running = start_.stillRunning())
        outcome.details.push_back(*running + (wasLetGo || isAgentGone_
                                                  ? " still runs and was not told to end"
                                                  : " still runs: perhaps it was not told to end"));
}

void Session::startLibrary() {
    if (!trace_.held().empty())
        console_.line("note    another program writes " + trace_.held() + ", so the trace is " +
                      trace_.path());
    trace_.removeOld();
    start_.begin();
    facade_ = std::make_unique<QorControlFacade>(settings_.path(), &log_, options_.refreshMs,
                                                 trace_.path());
    qorcontrol::setTcpNoDelay(*facade_, options_.tcpNoDelay);
    actuators_ = std::make_unique<HeldActuators>(*facade_);
    contact_ = std::make_unique<Contact>(*facade_, options_.timeoutMs);
    boxes_ = std::make_unique<BoxWatch>(*facade_, log_, boxAnswersOf(options_));
    if (!trace_.exists())
        console_.line("note    no trace, the library cannot write " + trace_.path());
}

std::optional<Outcome> Session::lookOutside() {
    auto seen = start_.whyInVain();
    // (One may have opened during the look.)
    if (!seen || isBoxOpen(*facade_)) return std::nullopt;
    if (seen->isForGood && seen->hasEnded) return refused(start_.asReason(std::move(*seen)));
    if (seen->what != noted_) console_.line("note    " + seen->what);
    noted_ = seen->what;
    if (!seen->isForGood) return std::nullopt;
    return refused(start_.asReason(std::move(*seen)));
}

Outcome Session::withReason(Outcome failed) const {
    const auto seen = start_.whyInVain();
    start::Refusal reason = start_.asReason(seen ? *seen : start::Refusal{failed.text});
    failed.text = std::move(reason.what);
    failed.details = std::move(reason.details);
    return failed;
}

Outcome Session::refused(start::Refusal refusal) {
    isOccupied_ = refusal.isOccupied;
    isQorGone_ = refusal.hasEnded;
    if (interrupt::isRequested()) return Outcome::failure("cancelled with Ctrl-C");
    Outcome outcome = Outcome::failure(std::move(refusal.what));
    outcome.details = std::move(refusal.details);
    outcome.isTraced = facade_ != nullptr;
    return outcome;
}

bool Session::namesExecutable() const {
    return !start_.settings()["QORexecutable"].text.empty();
}

std::string Session::delayHint() const {
    const auto usual = reads_.usualMs();
    if (!usual || !settings_.usesTcp() || options_.tcpNoDelay) return {};
    return fmt::format(
        "a read takes {:.0f} ms: if QOR acknowledges before it sends its data, --tcp-no-delay "
        "makes that quick ('qorctl doctor' finds it out)",
        *usual);
}

std::vector<std::string> Session::notGivenBack() const {
    return actuators_ != nullptr ? actuators_->notGivenBack() : std::vector<std::string>();
}

Outcome Session::awaitQor() {
    const Activity activity(console_, "QOR", [] { return "starting, no answer yet"; });
    Clock::time_point end = Clock::now() + startLimit;
    Clock::time_point quietEnd = Clock::now();
    while (true) {
        CallNotes ping;
        if (ping.note(facade_->pingQor(startPingMs))) {
            start_.succeed();
            return Outcome::success();
        }
        isAgentGone_ = isForGood(ping.cause());
        if (isAgentGone_) return withReason(ping.failure("QOR cannot be reached"));
        if (isBoxOpen(*facade_)) {  // QOR waits for somebody, and so do we
            quietEnd = Clock::now() + boxGrace;
            end = Clock::now() + startLimit;
        } else if (Clock::now() >= quietEnd) {
            if (const auto failed = lookOutside()) return *failed;
        }
        if (Clock::now() >= end)
            return withReason(
                ping.failure(fmt::format("no answer within {} s", startLimit.count())));
        if (!interrupt::sleepMs(betweenPingsMs)) return Outcome::failure("cancelled with Ctrl-C");
    }
}

void Session::letEcuGo() {
    for (const std::string& name : actuators_->giveAllBackForGood())
        console_.line("note    " + name + " was given back first");
    contact_->relyOnEcu(false);
}

Outcome Session::connectEcu(const ConnectOptions& connection) {
    letEcuGo();
    ConnectMonitor monitor;
    const auto state = [&]() -> std::string {
        if (!monitor.isAccepted()) return "waiting for QOR to accept";
        return facade_->isEcuOnline() ? "QOR reports progress" : "waiting for the ECU";
    };
    CallNotes calls;
    {
        const Activity activity(console_, "ECU", state);
        calls.note(facade_->connect(connection.record(options_.refreshMs), connection.connType(),
                                    &monitor));
    }
    contact_->relyOnEcu(calls.allWorked());
    if (calls.allWorked()) return calls.success("online");
    const std::string reason = monitor.error();
    return calls.failure(reason.empty() ? "QOR did not accept the request" : reason);
}

Outcome Session::shutDown() {
    const Clock::time_point start = Clock::now();
    facade_->shutdown();
    const bool wasLetGo = Clock::now() - start >= shutdownLimit;
    boxes_->end();
    if (wasLetGo && contact_->lost() != Contact::Lost::qor)
        return Outcome::failure("the library's agent thread did not end and was let go" +
                                leftBehind());
    if (facade_->pingQor(1)) return Outcome::failure("the library still answers");
    // Over TCP the library waits for the answers of one that has gone.
    return Outcome::success(tellEnd() + (wasLetGo ? ", the library still waits for it" : ""));
}

std::string Session::leftBehind() const {
    const auto running = start_.stillRunning();
    return running ? "; " + *running + " still runs and was not told to end" : std::string();
}

std::string Session::tellEnd() const {
    if (!namesExecutable())
        return contact_->didQorAnswer() ? "QOR and its ECU left as they are: the settings name no "
                                          "executable, so QOR is somebody else's"
                                        : "nothing to tell to end: QOR did not answer any more";
    const bool hasEnded = start_.hasQorEnded();
    if (contact_->didQorAnswer())
        return std::string(contact_->wasEcuOnline() ? "ECU disconnected, " : "") +
               (hasEnded ? "QOR has ended" : "QOR told to end");
    if (contact_->lost() == Contact::Lost::qor)
        return hasEnded ? "QOR had already ended"
                        : "no connection to QOR, which was not told to end";
    return hasEnded ? "QOR has ended" : "QOR did not answer: perhaps it was not told to end";
}

unsigned int Session::staleAfterMs() const {
    return options_.refreshMs / 2 + clockGrainMs;
}

}  // namespace qorctl
