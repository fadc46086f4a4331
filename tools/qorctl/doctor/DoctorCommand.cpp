#include "doctor/DoctorCommand.h"

#include <windows.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "doctor/CodePageCheck.h"
#include "doctor/ExecutableCheck.h"
#include "doctor/FilesCheck.h"
#include "doctor/FindingReport.h"
#include "doctor/KeyNames.h"
#include "doctor/KeyValues.h"
#include "doctor/ModulesCheck.h"
#include "doctor/QorCheck.h"
#include "HostPaths.h"
#include "JsonText.h"
#include "Session.h"

namespace qorctl {
namespace {

using namespace doctor;

struct DoctorOptions {
    SessionOptions session;
    std::string host;
    bool start = false;
    bool json = false;
};

const char* const footer =
    "Nothing is changed: what could be written is found out without leaving a file, and a QOR\n"
    "that runs is only asked for a sign of life and its state, over TCP for a few parameters that\n"
    "nobody has, too, and not even that while it talks to a host.\n"
    "With --start a QOR that does not run is started as the settings say and ended again.\n"
    "A QOR on another machine is asked by a connection to its port.\n"
    "--host looks in place of another host: paths in the settings go by its folder, its DLLs and\n"
    "its trace lie beside it. --trace says where else the trace would go (with --start: goes).\n"
    "With --transport a copy of the settings stands beside them until the end.\n"
    "\n"
    "Exit codes: 0 a host would work, 3 it would not: at least one finding is a problem. (1 and 2\n"
    "as for all commands.)\n"
    "\n"
    "Example:  qorctl doctor settings.ini --host C:\\eol\\host.exe";

HostPlace placeOf(const DoctorOptions& options) {
    HostPlace place;
    place.isAnother = !options.host.empty();
    place.program = place.isAnother ? paths::absoluteFile(options.host) : paths::ofThisProgram();
    const std::string& trace = options.session.tracePath;
    place.tracePath =
        !trace.empty() ? paths::absoluteFile(trace) : paths::traceFileOf(place.program);
    return place;
}

QorAnswers answersOf(const DoctorOptions& options, const std::string& settingsPath,
                     const PeerFacts& peer, const std::string& executable) {
    if (mayBeAsked(peer))
        return QorAnswers::ofRunning(settingsPath, options.session.timeoutMs, peer.isTcp);
    const bool isToBeStarted = options.start && !executable.empty() && peer.isUsable &&
                               !peer.isSomebodyThere() && peer.clients.empty();
    if (!isToBeStarted) return {};
    Console console(stderr);
    return QorAnswers::ofStarted(options.session, peer.isTcp, console);
}

/// What depends on the content of the settings.
Findings checkContent(const DoctorOptions& options, const SettingsFacts& settings,
                      const HostPlace& host) {
    Findings findings = checkValues(settings);
    append(findings, checkCodePage(GetACP(), settings));
    const auto executable = ExecutableFacts::gather(settings["QORexecutable"].text, host);
    append(findings, checkExecutable(executable));
    const PeerFacts peer = PeerFacts::gather(settings);
    append(findings, checkQor(peer, answersOf(options, settings.path, peer, executable.resolved),
                              executable.resolved));
    return findings;
}

Findings checkAll(const DoctorOptions& options, const SettingsFile& file) {
    const HostPlace host = placeOf(options);
    const SettingsFacts settings = SettingsFacts::read(file.path());
    Findings findings = checkModules(host);
    append(findings, checkFiles(host));
    append(findings, checkNames(settings));
    if (settings.file == SettingsFacts::File::readable)
        append(findings, checkContent(options, settings, host));
    return findings;
}

int runDoctor(const DoctorOptions& options) {
    const std::string path = paths::absolute(options.session.settingsPath);
    const SettingsFile file(path, options.session.transport);
    const Findings findings = checkAll(options, file);
    if (options.json) {
        const nlohmann::json object = {{"command", "doctor"},
                                       {"settings", utf8Of(path)},
                                       {"ok", wouldWork(findings)},
                                       {"findings", jsonOf(findings)}};
        std::printf("%s\n", printed(object).c_str());
    } else {
        for (const std::string& line : linesOf(findings)) std::printf("%s\n", line.c_str());
    }
    return wouldWork(findings) ? exitSuccess : exitWouldNotWork;
}

}  // namespace

Action declareDoctor(CLI::App& command) {
    const auto options = std::make_shared<DoctorOptions>();
    options->session.declare(command);
    CLI::Option* const host =
        command.add_option("--host", options->host, "Look in place of this host's executable")
            ->type_name("HOST.exe")
            ->check(paths::whyNotAbsolute);
    // The library in this program takes paths from this program's folder.
    command.add_flag("--start", options->start, "Start QOR, ask it and end it, unless it runs")
        ->excludes(host);
    command.add_flag("--json", options->json, "Print the findings as one JSON object");
    command.footer(footer);
    return [options] { return runDoctor(*options); };
}

}  // namespace qorctl
