#include "Conversation.h"

#include <fmt/format.h>

#include "Action.h"
#include "Interrupt.h"
#include "JsonText.h"

namespace qorctl {

Conversation::Conversation(const char* command, const SessionOptions& options, const Output& output)
    : command_(command),
      output_(output),
      console_(output.steps),
      session_(options, console_),
      report_(console_, session_.trace().path()) {
    results_["command"] = command_;
    results_["log"] = nlohmann::json::array();
    results_["lost"] = nullptr;
    results_["settings"] = utf8Of(session_.options().settingsPath);
    results_["qorExecutable"] = "";
    results_["transport"] = utf8Of(session_.settings().transport());
    results_["trace"] = utf8Of(session_.trace().path());
}

int Conversation::run(const ConnectOptions* connection, const Work& work) {
    tellBeginning();
    if (step("start QOR", [this] { return startQor(); })) {
        const interrupt::LastWords lastWords([this] {
            const std::vector<std::string> held = session_.notGivenBack();
            tellLost(held);
            return held.empty() ? exitFailure : exitNotGivenBack;
        });
        const auto connect = [&] { return session_.connectEcu(*connection); };
        if (connection == nullptr || step("connect the ECU", connect)) carryOut(work);
        giveActuatorsBack();
        tellLoss();
        const std::string hint = session_.delayHint();
        if (!hint.empty()) console_.line("note    " + hint);
        report_.runAlways("shut down", [this] { return session_.shutDown(); });
    }
    console_.line(report_.summary());
    finishResults();
    const std::vector<std::string> lost = session_.notGivenBack();
    tellLost(lost);
    if (!lost.empty()) return exitNotGivenBack;
    if (session_.isOccupied()) return exitOccupied;
    return report_.allSucceeded() ? exitSuccess : exitFailure;
}

void Conversation::carryOut(const Work& work) {
    try {
        work();
    } catch (const std::exception& error) {
        const std::string reason = error.what();
        report_.runAlways("go on", [&] { return Outcome::failure(reason); });
    }
}

void Conversation::giveActuatorsBack() {
    HeldActuators& held = session_.actuators();
    while (const auto name = held.latest())
        report_.runAlways("give back " + *name, [&] {
            CallNotes calls;
            return held.giveBackForGood(*name, calls)
                       ? calls.success()
                       : calls.failure("it may still be under direct control");
        });
}

void Conversation::tellLoss() {
    Contact& contact = session_.contact();
    contact.lookAtTheEnd();
    if (contact.lost() == Contact::Lost::nothing) return;
    results_["lost"] = nameOf(contact.lost());
    if (session_.options().keepsGoing)
        console_.line("note    " + contact.takeLoss().text);
    else if (!contact.isTold())
        report_.runAlways("keep in contact", [&] { return contact.takeLoss(); });
}

void Conversation::tellLost(const std::vector<std::string>& names) {
    if (names.empty()) return;
    std::fprintf(stderr, "qorctl: NOT GIVEN BACK, perhaps still under direct control: %s\n",
                 fmt::format("{}", fmt::join(names, ", ")).c_str());
    std::fflush(stderr);
}

Outcome Conversation::startQor() {
    Outcome outcome = session_.start();
    if (!outcome.ok) return outcome;
    // The library would wait for the path of one for seconds.
    if (!session_.namesExecutable()) return Outcome::success("(started by someone else)");
    const std::string executable = session_.facade().getQorExecutablePath();
    results_["qorExecutable"] = utf8Of(executable);
    return Outcome::success(executable);
}

void Conversation::tellBeginning() {
    const std::string title = fmt::format("qorctl {}: ", command_);
    const std::string indent(title.size(), ' ');
    console_.line(title + "settings  " + session_.options().settingsPath);
    console_.line(indent + "transport " + session_.settings().transport());
    console_.line(indent + "trace     " + session_.trace().path());
}

void Conversation::finishResults() {
    results_["ok"] = report_.allSucceeded();
    results_["steps"] = report_.asJson();
    results_["notGivenBack"] = nlohmann::json::array();
    for (const std::string& name : session_.notGivenBack())
        results_["notGivenBack"].push_back(utf8Of(name));
    for (const std::string& line : session_.log().lines()) results_["log"].push_back(utf8Of(line));
    if (!output_.json) return;
    const std::string text = output_.onOneLine ? printedOnOneLine(results_) : printed(results_);
    std::printf("%s\n", text.c_str());
}

}  // namespace qorctl
