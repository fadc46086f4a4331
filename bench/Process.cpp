#include "Process.h"

#include <winsock2.h>

#include <windows.h>

#include <stdexcept>

#include "common/LastError.h"
#include "common/Paths.h"

Process::Process(const std::string& program, const std::string& arguments) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    const std::string path = programFolder() + program;
    std::string commandLine = "\"" + path + "\" " + arguments;
    if (!CreateProcessA(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        nullptr, &startup, &process))
        throw std::runtime_error("cannot start " + path + ", " + common::lastErrorText());
    CloseHandle(process.hThread);
    handle_ = process.hProcess;
}

Process::~Process() {
    if (WaitForSingleObject(handle_, 2000) != WAIT_OBJECT_0) TerminateProcess(handle_, 1);
    CloseHandle(handle_);
}

std::string programFolder() {
    return common::executableDirectory();
}

unsigned int freePort() {
    const SOCKET probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    const bool found = bind(probe, plain, length) == 0 && getsockname(probe, plain, &length) == 0;
    closesocket(probe);
    if (!found) throw std::runtime_error("no free port on the loopback address");
    return ntohs(address.sin_port);
}
