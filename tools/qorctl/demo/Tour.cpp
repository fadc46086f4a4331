#include "demo/Tour.h"

#include <fmt/format.h>

#include "JsonText.h"

namespace qorctl {

Tour::Tour(Session& session, Console& console)
    : session_(session),
      facade_(session.facade()),
      console_(console),
      timeoutMs_(session.options().timeoutMs),
      report_(console, session.trace()),
      descriptions_(session.facade()) {
    results_["command"] = "demo";
    results_["settings"] = utf8Of(session.options().settingsPath);
    results_["transport"] = utf8Of(session.settings().transport());
    results_["trace"] = utf8Of(session.trace().path());
}

bool Tour::run() {
    console_.line("qorctl demo: settings  " + session_.options().settingsPath);
    console_.line("             transport " + session_.settings().transport());
    console_.line("             trace     " + session_.trace().path());
    if (report_.run("start QOR", [this] { return startQor(); })) {
        if (report_.run("connect the ECU", [this] { return session_.connectEcu(); })) visit();
        report_.runAlways("shut down", [this] { return session_.shutDown(); });
    }
    console_.line(report_.summary());
    results_["ok"] = report_.allSucceeded();
    results_["steps"] = report_.asJson();
    for (const std::string& line : session_.log().lines()) results_["log"].push_back(utf8Of(line));
    return report_.allSucceeded();
}

void Tour::visit() {
    report_.run("describe parameters", [this] { return describe(); });
    report_.run("read scalars", [this] { return readScalars(); });
    report_.run("read a curve", [this] { return readArrays("IdleSpeedOverTemperature"); });
    report_.run("read a map", [this] { return readArrays("IgnitionMap"); });
    report_.run("read texts", [this] { return readTexts(); });
    report_.run("watch live measurements", [this] { return watchLive(); });
    report_.run("write, read back, restore", [this] { return writeAndRestore(); });
    report_.run("measure the value cache", [this] { return measureCache(); });
}

Outcome Tour::startQor() {
    Outcome outcome = session_.awaitQor();
    if (!outcome.ok) return outcome;
    const std::string executable = facade_.getQorExecutablePath();
    results_["qorExecutable"] = utf8Of(executable);
    if (executable.empty()) return Outcome::success("(started by someone else)");
    return Outcome::success(executable);
}

bool Tour::read(const std::string& name, std::vector<double>& values) {
    return facade_.getParamData(name, values, timeoutMs_) && !values.empty();
}

void Tour::show(const TextTable& table) {
    console_.line("");
    for (const std::string& line : table.lines()) console_.line("    " + line);
    console_.line("");
}

}  // namespace qorctl
