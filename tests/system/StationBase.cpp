#include "StationBase.h"

#include <fstream>

#include "QorProcesses.h"
#include "Waiting.h"

namespace {

constexpr unsigned goneMs = 5000;

}  // namespace

StationBase::StationBase(Transport transport)
    : settings(transport, folder.path()),
      settingsPath(folder.pathOf("qor settings.ini")),
      hostPath(folder.pathOf("host.exe")) {}

void StationBase::awaitEndOfQor() const {
    if (!settings.executable.empty()) {
        EXPECT_TRUE(eventually(goneMs, [] { return qor::running().empty(); }))
            << "QOR was left running";
    }
    qor::killAll();
}

void StationBase::writeSettings() {
    settings.script = script.empty() ? std::string() : folder.write("script.json", script);
    std::ofstream(settingsPath, std::ios::binary) << settings.text();
}

std::vector<WireRecord> StationBase::wire() const {
    return readWireLog(settings.recordLog);
}

std::vector<std::string> StationBase::requests(std::size_t from) const {
    return asText(requestsIn(tail(wire(), from)));
}

std::vector<std::string> StationBase::answers(std::size_t from) const {
    return asText(answersIn(tail(wire(), from)));
}
