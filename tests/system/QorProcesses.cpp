#include "QorProcesses.h"

#include <winsock2.h>

#include <windows.h>

// Needs windows.h before it.
#include <tlhelp32.h>

#include <atomic>
#include <stdexcept>

#include "Waiting.h"

namespace qor {

namespace {

constexpr char programName[] = "qor-simulator.exe";
constexpr unsigned goneMs = 5000;

bool canBind(unsigned short port) {
    const SOCKET probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool bound =
        bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    closesocket(probe);
    return bound;
}

}  // namespace

std::string executable() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string own(path);
    return own.substr(0, own.find_last_of('\\') + 1) + programName;
}

std::vector<unsigned long> running() {
    std::vector<unsigned long> ids;
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry))
        if (entry.th32ParentProcessID == GetCurrentProcessId() &&
            lstrcmpiA(entry.szExeFile, programName) == 0)
            ids.push_back(entry.th32ProcessID);
    CloseHandle(snapshot);
    return ids;
}

bool startByHand(const std::string& settingsPath) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    std::string commandLine = " -external_operating \"" + settingsPath + "\"";
    if (!CreateProcessA(executable().c_str(), &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr,
                        nullptr, &startup, &process))
        return false;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

void killAll() {
    for (const unsigned long id : running()) {
        HANDLE const process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
        if (process == nullptr) continue;
        TerminateProcess(process, 1);
        WaitForSingleObject(process, goneMs);
        CloseHandle(process);
    }
    if (!eventually(goneMs, [] { return running().empty(); }))
        throw std::runtime_error("a simulated QOR cannot be ended");
}

unsigned short freePort() {
    // Below the range from which the system takes the ports of outgoing connections.
    constexpr unsigned first = 20000;
    constexpr unsigned count = 12000;
    static WSADATA sockets;
    static const int started = WSAStartup(MAKEWORD(2, 2), &sockets);
    static std::atomic<unsigned> next{GetCurrentProcessId() * 97u};
    if (started != 0) throw std::runtime_error("no sockets");
    for (unsigned tries = 0; tries < count; ++tries) {
        const auto port = static_cast<unsigned short>(first + next++ % count);
        if (canBind(port)) return port;
    }
    throw std::runtime_error("no free port");
}

}  // namespace qor
