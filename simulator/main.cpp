// The simulated QOR: what the library's tests and the demonstration talk to in place of the real
// application. Started by the library with " -external_operating "settings"", or by hand.

#include <windows.h>

#include <exception>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "app/SettingsFile.h"
#include "app/Simulator.h"
#include "model/ModelLoader.h"
#include "script/ScriptLoader.h"

namespace {

constexpr int badStart = 2;

using namespace simulator;

int runWith(const std::string& settingsPath, Log& log) {
    log = Log(logPathIn(settingsPath));
    const Settings settings = readSettingsFile(settingsPath);
    const EcuModel model = loadModel(settings.modelPath);
    Script script;
    const ScriptUse use{settings.connectMs, settings.transport, namesOf(model.parameters)};
    if (!settings.scriptPath.empty()) script = loadScript(settings.scriptPath, use);
    return Simulator(settings, model, std::move(script), log).run();
}

/// A program without a console, started by another one, has nowhere to show an error: unless the
/// settings name a log, it is left in a file beside the settings.
void reportTo(Log& log, const std::string& settingsPath, const std::string& text) {
    if (!log.hasFile()) {
        try {
            log = Log(folderOf(settingsPath) + "qor-simulator.log");
        } catch (const std::exception&) {
            log = Log();
        }
    }
    log.error(text);
}

}  // namespace

int main() {
    Log log;
    const std::vector<std::string> arguments = argumentsOf(GetCommandLineA());
    const std::string given = settingsPathIn(arguments);
    if (given.empty()) {
        log.error("usage: qor-simulator -external_operating \"settings file\"");
        return badStart;
    }
    const std::string settingsPath = absolutePath(given);
    // Started by a host it shares the host's console. Ctrl-C there is meant for the host, which
    // then ends QOR in order.
    if (isExternallyOperated(arguments)) SetConsoleCtrlHandler(nullptr, TRUE);
    try {
        return runWith(settingsPath, log);
    } catch (const std::exception& error) {
        reportTo(log, settingsPath, error.what());
        return badStart;
    }
}
