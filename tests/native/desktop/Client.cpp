// What the client asks of the system: its settings, which are the name of their file, QOR's
// process, which is there already, and message boxes.
#include <io.h>
#include <windows.h>

#include <string_view>

#include "client/ClientSettings.h"
#include "client/ProcessStarter.h"
#include "Desktop.h"

namespace {

constexpr std::string_view guest = "guest";
constexpr int firstButton = 1;
constexpr int boxLooks = 5;

}  // namespace

ClientSettings ClientSettings::read(const std::string& path) {
    ClientSettings settings;
    settings.path = path;
    settings.executable = "/faked/qor";  // so that a shutdown ends it; never started
    const std::string name = path.substr(path.rfind('/') + 1);
    settings.serverPipeName = name;
    settings.clientPipeName = desktop::clientTitleOf(name);
    settings.initMfc = name.compare(0, guest.size(), guest) != 0;
    const std::size_t colon = name.find(':');
    settings.useTcp = colon != std::string::npos;
    settings.serverIp = name.substr(0, colon);
    if (settings.useTcp)
        settings.tcpPort = static_cast<unsigned>(std::stoul(name.substr(colon + 1)));
    return settings;
}

std::string desktop::clientTitleOf(const std::string& name) {
    return name + ", client";
}

DWORD GetFileAttributesA(const char*) {
    return 0;
}

int _access(const char*, int) {
    return 0;
}

bool ProcessStarter::start(const std::string&, const std::string&) {
    return true;
}

void ProcessStarter::awaitIdle(unsigned int) {}

HWND GetForegroundWindow() {
    return nullptr;
}

/// Somebody presses the first button soon. Like the system's it dispatches messages meanwhile.
int MessageBoxA(HWND, const char*, const char*, UINT) {
    for (int look = 0; look < boxLooks; ++look) {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        Sleep(1);
    }
    return firstButton;
}
