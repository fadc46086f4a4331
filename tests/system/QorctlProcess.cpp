#include "QorctlProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <thread>

#include "QorProcesses.h"

namespace {

/// As the run-time library of the child takes them apart again.
std::string quoted(const std::string& argument) {
    if (!argument.empty() && argument.find_first_of(" \t\"") == std::string::npos) return argument;
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char character : argument) {
        if (character == '"') text.append(backslashes + 1, '\\');
        backslashes = character == '\\' ? backslashes + 1 : 0;
        text += character;
    }
    return text.append(backslashes, '\\') + '"';
}

std::string commandLineOf(const std::string& program, const std::vector<std::string>& arguments) {
    std::string line = quoted(program);
    for (const std::string& argument : arguments) line += " " + quoted(argument);
    return line;
}

std::string program() {
    const std::string simulator = qor::executable();
    return simulator.substr(0, simulator.find_last_of('\\') + 1) + "qorctl.exe";
}

struct Pipe {
    HANDLE read = nullptr;
    HANDLE write = nullptr;

    Pipe() {
        if (CreatePipe(&read, &write, nullptr, 0) == 0) throw std::runtime_error("no pipe");
    }
};

/// The end that the child gets.
HANDLE inherited(HANDLE end) {
    SetHandleInformation(end, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return end;
}

}  // namespace

/// Reads one of the child's streams on a thread of its own. Its end says nothing about the child's:
/// under Wine the desktop, when the child is the first that needs it, gets hold of it and lives on.
class QorctlProcess::Output {
public:
    explicit Output(HANDLE end) : end_(end), thread_([this] { read(); }) {}
    ~Output() { finish(); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Everything; only when the child has ended.
    std::string whole() {
        finish();
        text_.erase(std::remove(text_.begin(), text_.end(), '\r'), text_.end());
        return text_;
    }

private:
    void finish() {
        childEnded_ = true;
        if (thread_.joinable()) thread_.join();
    }
    void read() {
        for (bool last = false; !last;) {
            last = childEnded_;  // what it wrote before is in the pipe now
            while (readWhatIsThere()) continue;
            if (!last) Sleep(2);
        }
        CloseHandle(end_);
    }
    bool readWhatIsThere() {
        char bytes[4096];
        DWORD count = 0;
        if (PeekNamedPipe(end_, nullptr, 0, nullptr, &count, nullptr) == 0 || count == 0 ||
            ReadFile(end_, bytes, sizeof bytes, &count, nullptr) == 0)
            return false;
        text_.append(bytes, count);
        return true;
    }

    HANDLE const end_;
    std::atomic<bool> childEnded_{false};
    std::string text_;    // the thread's until it has ended
    std::thread thread_;  // last: it uses everything above
};

QorctlProcess::QorctlProcess(const std::vector<std::string>& arguments, const std::string& input) {
    const Pipe in;
    const Pipe out;
    const Pipe err;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = inherited(in.read);
    startup.hStdOutput = inherited(out.write);
    startup.hStdError = inherited(err.write);
    PROCESS_INFORMATION process = {};
    std::string line = commandLineOf(program(), arguments);
    const bool started = CreateProcessA(program().c_str(), &line[0], nullptr, nullptr, TRUE, 0,
                                        nullptr, nullptr, &startup, &process) != 0;
    for (HANDLE const end : {in.read, out.write, err.write}) CloseHandle(end);
    out_ = std::make_unique<Output>(out.read);
    err_ = std::make_unique<Output>(err.read);
    DWORD written = 0;
    if (started)
        WriteFile(in.write, input.data(), static_cast<DWORD>(input.size()), &written, nullptr);
    CloseHandle(in.write);
    if (!started) throw std::runtime_error("qorctl cannot be started");
    CloseHandle(process.hThread);
    process_ = process.hProcess;
}

QorctlProcess::~QorctlProcess() {
    TerminateProcess(process_, 1);
    CloseHandle(process_);
}

void QorctlProcess::raise(DWORD consoleEvent) const {
    // At the same address in every process, as all that is in it.
    const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernelbase.dll"), "CtrlRoutine")));
    ASSERT_NE(nullptr, routine);
    HANDLE const thread = CreateRemoteThread(
        process_, nullptr, 0, routine,
        reinterpret_cast<void*>(static_cast<std::uintptr_t>(consoleEvent)), 0, nullptr);
    ASSERT_NE(nullptr, thread);
    CloseHandle(thread);
}

QorctlProcess::Ended QorctlProcess::wait(unsigned timeoutMs) {
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process_, timeoutMs)) << "qorctl does not end";
    TerminateProcess(process_, 1);
    DWORD code = 0;
    GetExitCodeProcess(process_, &code);
    return {static_cast<int>(code), out_->whole(), err_->whole()};
}

QorctlProcess::Ended runQorctl(const std::vector<std::string>& arguments,
                               const std::string& input) {
    return QorctlProcess(arguments, input).wait();
}
