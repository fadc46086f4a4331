#include "StationSettings.h"

#include <windows.h>

#include <atomic>
#include <sstream>

#include "QorProcesses.h"
#include "support/TempFolder.h"
#include "Waiting.h"

namespace {

std::string uniqueTitle() {
    static std::atomic<unsigned> counter{0};
    return "QorSystemTest-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(++counter);
}

constexpr unsigned launchMs = 15000;

}  // namespace

StationSettings::StationSettings(Transport transport, const std::string& folder)
    : executable(qor::executable()),
      useTcp(transport == Transport::tcp ? "true" : "false"),
      port(qor::freePort()),
      titles(uniqueTitle()),
      recordLog(folder + "\\records.json"),
      log(folder + "\\qor.log"),
      exportPrefix(folder + "\\export-") {}

std::string StationSettings::text() const {
    std::ostringstream out;
    out << "[CommonSettings]\nQORexecutable=" << executable << "\nUseTcp=" << useTcp
        << "\nServerIp=127.0.0.1\nTcpPort=" << port << "\nServerPipeName=" << titles
        << "-qor\nClientPipeName=" << titles << "-host\n[Simulator]\nModel=" << model
        << "\nScript=" << script << "\nAnswerStyle=" << answerStyle << "\nConnectMs=" << connectMs
        << "\nExitWithoutClientMs=30000\nRecordLog=" << recordLog << "\nLog=" << log
        << "\nExportPrefix=" << exportPrefix << "\n"
        << simulatorLines;
    return out.str();
}

bool StationSettings::startQor(const std::string& path) const {
    DeleteFileA(recordLog.c_str());
    const std::string title = titles + "-qor";
    const auto says = [&](const char* words) {
        return bytesOfFile(log).find(words) != std::string::npos;
    };
    const auto canBeReached = [&] {
        return FindWindowA(nullptr, title.c_str()) != nullptr || says("listening on");
    };
    // Another test program that looks for a free port has this one for a moment.
    for (int tries = 0; tries < 5; ++tries) {
        DeleteFileA(log.c_str());
        if (!qor::startByHand(path)) return false;
        eventually(launchMs, [&] { return canBeReached() || says("the address is in use"); });
        if (canBeReached()) return true;
        if (!says("the address is in use")) return false;
        Sleep(50);
    }
    return false;
}
