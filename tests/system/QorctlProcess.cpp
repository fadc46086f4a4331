#include "QorctlProcess.h"

#include <gtest/gtest.h>

// Needs windows.h before it.
#include <psapi.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
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
        return soFar();
    }
    std::string soFar() const {
        const std::lock_guard<std::mutex> guard(mutex_);
        std::string text = text_;
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }
    /// What was not taken yet, as it came.
    std::string take() {
        const std::lock_guard<std::mutex> guard(mutex_);
        std::string fresh = text_.substr(taken_);
        taken_ = text_.size();
        return fresh;
    }
    void read(bool isRead) { isRead_ = isRead; }
    void close() { isClosed_ = true; }

private:
    void finish() {
        childEnded_ = true;
        isRead_ = true;
        if (thread_.joinable()) thread_.join();
    }
    void read() {
        for (bool last = false; !last;) {
            last = childEnded_;  // what it wrote before is in the pipe now
            while (isRead_ && !isClosed_ && readWhatIsThere()) continue;
            if (isClosed_) break;
            if (!last) Sleep(2);
        }
        CloseHandle(end_);
    }
    bool readWhatIsThere() {
        char bytes[16384];
        DWORD count = 0;
        if (PeekNamedPipe(end_, nullptr, 0, nullptr, &count, nullptr) == 0 || count == 0 ||
            ReadFile(end_, bytes, sizeof bytes, &count, nullptr) == 0)
            return false;
        const std::lock_guard<std::mutex> guard(mutex_);
        text_.append(bytes, count);
        return true;
    }

    HANDLE const end_;
    std::atomic<bool> childEnded_{false};
    std::atomic<bool> isRead_{true};
    std::atomic<bool> isClosed_{false};
    mutable std::mutex mutex_;
    std::string text_;       // guarded by mutex_
    std::size_t taken_ = 0;  // guarded by mutex_
    std::thread thread_;     // last: it uses everything above
};

QorctlProcess::QorctlProcess(const std::vector<std::string>& arguments, const std::string& input)
    : QorctlProcess(arguments, OpenInput()) {
    write(input);
    closeInput();
}

QorctlProcess::QorctlProcess(const std::vector<std::string>& arguments, OpenInput) {
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
    input_ = in.write;
    if (!started) {
        closeInput();
        throw std::runtime_error("qorctl cannot be started");
    }
    CloseHandle(process.hThread);
    process_ = process.hProcess;
}

QorctlProcess::~QorctlProcess() {
    TerminateProcess(process_, 1);
    closeInput();
    CloseHandle(process_);
}

bool QorctlProcess::write(const std::string& text) const {
    DWORD written = 0;
    return text.empty() || WriteFile(input_, text.data(), static_cast<DWORD>(text.size()), &written,
                                     nullptr) != FALSE;
}

void QorctlProcess::closeInput() {
    if (input_ != nullptr) CloseHandle(input_);
    input_ = nullptr;
}

std::string QorctlProcess::takeOut() {
    return out_->take();
}

std::string QorctlProcess::errSoFar() const {
    return err_->soFar();
}

void QorctlProcess::readOutput(bool isRead) {
    out_->read(isRead);
}

void QorctlProcess::closeOutput() {
    out_->close();
}

void QorctlProcess::kill() const {
    TerminateProcess(process_, 1);
}

bool QorctlProcess::isRunning() const {
    return WaitForSingleObject(process_, 0) == WAIT_TIMEOUT;
}

std::size_t QorctlProcess::memory() const {
    PROCESS_MEMORY_COUNTERS counters = {};
    EXPECT_TRUE(GetProcessMemoryInfo(process_, &counters, sizeof counters));
    return counters.WorkingSetSize;
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
