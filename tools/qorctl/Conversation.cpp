#include "Conversation.h"

#include <fmt/format.h>

#include "Action.h"
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
    results_["settings"] = utf8Of(session_.options().settingsPath);
    results_["transport"] = utf8Of(session_.settings().transport());
    results_["trace"] = utf8Of(session_.trace().path());
}

int Conversation::run(const ConnectOptions* connection, const Work& work) {
    tellBeginning();
    if (step("start QOR", [this] { return startQor(); })) {
        const auto connect = [&] { return session_.connectEcu(*connection); };
        if (connection == nullptr || step("connect the ECU", connect)) work();
        report_.runAlways("shut down", [this] { return session_.shutDown(); });
    }
    console_.line(report_.summary());
    finishResults();
    return report_.allSucceeded() ? exitSuccess : exitFailure;
}

Outcome Conversation::startQor() {
    Outcome outcome = session_.awaitQor();
    if (!outcome.ok) return outcome;
    const std::string executable = session_.facade().getQorExecutablePath();
    results_["qorExecutable"] = utf8Of(executable);
    if (executable.empty()) return Outcome::success("(started by someone else)");
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
    for (const std::string& line : session_.log().lines()) results_["log"].push_back(utf8Of(line));
    if (!output_.json) return;
    const std::string text = output_.onOneLine ? printedOnOneLine(results_) : printed(results_);
    std::printf("%s\n", text.c_str());
}

}  // namespace qorctl
