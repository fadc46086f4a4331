#include "PipedProcess.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "common/LastError.h"
#include "Process.h"

namespace {

constexpr unsigned int endMs = 10000;

struct Pipe {
    HANDLE read = nullptr;
    HANDLE write = nullptr;

    Pipe() {
        if (CreatePipe(&read, &write, nullptr, 0) == 0) throw std::runtime_error("no pipe");
    }
};

HANDLE inherited(HANDLE handle) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

std::string newErrorPath() {
    static int count = 0;
    char folder[MAX_PATH] = "";
    GetTempPathA(sizeof folder, folder);
    return std::string(folder) + "qor-bench-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(++count) + ".err";
}

bool sendAll(HANDLE pipe, const std::string& text) {
    DWORD written = 0;
    return WriteFile(pipe, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) !=
           FALSE;
}

}  // namespace

PipedProcess::PipedProcess(const std::string& program, const std::string& arguments)
    : errorPath_(newErrorPath()) {
    const Pipe in;
    const Pipe out;
    HANDLE const errors = CreateFileA(errorPath_.c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = inherited(in.read);
    startup.hStdOutput = inherited(out.write);
    startup.hStdError = inherited(errors);
    PROCESS_INFORMATION process = {};
    std::string commandLine = "\"" + programFolder() + program + "\" " + arguments;
    const bool started = CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0,
                                        nullptr, nullptr, &startup, &process) != 0;
    const std::string why = started ? std::string() : common::lastErrorText();
    for (HANDLE const end : {in.read, out.write, errors}) CloseHandle(end);
    input_ = in.write;
    output_ = out.read;
    if (!started) throw std::runtime_error("cannot start " + program + ", " + why);
    CloseHandle(process.hThread);
    process_ = process.hProcess;
}

PipedProcess::~PipedProcess() {
    CloseHandle(input_);
    char dropped[4096];
    DWORD count = 0;
    while (ReadFile(output_, dropped, sizeof dropped, &count, nullptr) != FALSE && count > 0)
        continue;
    CloseHandle(output_);
    if (WaitForSingleObject(process_, endMs) != WAIT_OBJECT_0) TerminateProcess(process_, 1);
    CloseHandle(process_);
    DeleteFileA(errorPath_.c_str());
}

void PipedProcess::write(const std::string& text) const {
    if (!sendAll(input_, text)) throw std::runtime_error("a program reads no more: " + errors());
}

std::string PipedProcess::readLine() {
    while (true) {
        const std::size_t end = rest_.find('\n');
        if (end != std::string::npos) {
            std::string line = rest_.substr(0, end);
            rest_.erase(0, end + 1);
            return line;
        }
        char bytes[16384];
        DWORD count = 0;
        if (ReadFile(output_, bytes, sizeof bytes, &count, nullptr) == FALSE || count == 0)
            throw std::runtime_error("a program says no more: " + errors());
        rest_.append(bytes, count);
    }
}

std::string PipedProcess::errors() const {
    std::ifstream file(errorPath_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int runPipePeer() {
    HANDLE const in = GetStdHandle(STD_INPUT_HANDLE);
    HANDLE const out = GetStdHandle(STD_OUTPUT_HANDLE);
    std::string line;
    char bytes[16384];
    for (DWORD count = 0;
         ReadFile(in, bytes, sizeof bytes, &count, nullptr) != FALSE && count > 0;) {
        line.append(bytes, count);
        if (line.back() == '\n') sendAll(out, std::exchange(line, {}));
    }
    return 0;
}
