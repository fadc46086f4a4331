// A host under load: many threads that call the library at random and hold each answer against what
// only its request can have brought. An orchestrator gives it orders on standard input.
//
// usage: soak-host SETTINGS BOX-CAPTION SEED THREADS GRACE-MS [HOST-PATH]

#include <winsock2.h>

#include <windows.h>

#include <cstdlib>
#include <iostream>

#include "Commander.h"

namespace {

constexpr DWORD beatMs = 500;

/// Tells that the host lives, and what it has done: the orchestrator may have to end it.
class Heart {
public:
    Heart(soak::Report& report, soak::Commander& commander)
        : thread_([this, &report, &commander] {
              while (!ends_) {
                  report.line("beat " + commander.state());
                  Sleep(beatMs);
              }
          }) {}
    ~Heart() {
        ends_ = true;
        thread_.join();
    }
    Heart(const Heart&) = delete;
    Heart& operator=(const Heart&) = delete;

private:
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

int run(const soak::HostSettings& settings) {
    soak::Report report;
    soak::Commander commander(report, settings);
    const Heart heart(report, commander);
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!commander.carryOut(line)) return report.breaches() == 0 ? 0 : 1;
    }
    return 3;  // the orchestrator has gone
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 6) return 2;
    soak::HostSettings settings;
    settings.settingsPath = argv[1];
    settings.boxCaption = argv[2];
    settings.seed = std::strtoull(argv[3], nullptr, 10);
    settings.threads = static_cast<unsigned>(std::strtoul(argv[4], nullptr, 10));
    settings.graceMs = static_cast<unsigned>(std::strtoul(argv[5], nullptr, 10));
    if (argc > 6) settings.hostPath = argv[6];
    return run(settings);
}
