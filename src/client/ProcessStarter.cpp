#include "client/ProcessStarter.h"

#include <windows.h>

bool ProcessStarter::start(const std::string& executable, const std::string& commandLine) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWMINIMIZED;
    PROCESS_INFORMATION process = {};
    std::string writable = commandLine;  // the system may change it while it reads it
    if (!CreateProcessA(executable.c_str(), writable.data(), nullptr, nullptr, FALSE,
                        NORMAL_PRIORITY_CLASS, nullptr, nullptr, &startup, &process))
        return false;
    process_ = process.hProcess;
    return true;
}

void ProcessStarter::awaitIdle(unsigned int idleMs) {
    WaitForInputIdle(process_, idleMs);
}
