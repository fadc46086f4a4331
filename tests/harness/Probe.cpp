// What can go wrong with a test program, each as a test of its own. runner_test.py chooses one and
// demands that the runner calls it a failure.

#include <gmock/gmock.h>

#include <windows.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace {

void crash() {
    volatile int* volatile const nowhere = nullptr;
    *nowhere = 1;
}

/// Wine makes 0 of the exit code of a process that its debugger ends when one of the threads that
/// it had has ended.
void endAThread() {
    std::thread([] {}).join();
}

/// Starts this program again to play a part. It gets no streams of ours, and nobody looks at its
/// exit code.
HANDLE startChild(const std::string& part) {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string line = "\"" + std::string(path) + "\" " + part;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(path, &line[0], nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr,
                        &startup, &process))
        std::abort();
    CloseHandle(process.hThread);
    return process.hProcess;
}

void runChild(const std::string& part) {
    HANDLE const process = startChild(part);
    WaitForSingleObject(process, INFINITE);
    CloseHandle(process);
}

void endProcess(DWORD id) {
    HANDLE const process = OpenProcess(PROCESS_TERMINATE, FALSE, id);
    TerminateProcess(process, 0);
    CloseHandle(process);
}

/// A child plays its part before any test would run.
struct Child {
    Child() {
        if (__argc != 2) return;
        const std::string part = __argv[1];
        if (part.front() == '-') return;
        if (part == "crash") {
            endAThread();
            crash();
        }
        if (part == "crash soon") {
            Sleep(500);
            crash();
        }
        if (part == "have a child that crashes") runChild("crash");
        if (part == "stay") Sleep(60000);
        if (part.find("end ") == 0) endProcess(std::stoul(part.substr(4)));
        std::exit(0);
    }
} const child;

struct CrashAtTheEnd {
    bool armed = false;
    ~CrashAtTheEnd() {
        if (armed) crash();
    }
} crashAtTheEnd;

TEST(Probe, Passes) {}

TEST(Probe, PassesAndSkips) {
    GTEST_SKIP();
}

TEST(Probe, Fails) {
    FAIL();
}

TEST(Probe, CrashesWhenAThreadHasEnded) {
    endAThread();
    crash();
}

TEST(Probe, CrashesInAnotherThread) {
    endAThread();
    std::thread(crash).join();
}

TEST(Probe, CrashesBehindItsSummary) {
    endAThread();
    crashAtTheEnd.armed = true;
}

TEST(Probe, HasAGrandchildThatCrashes) {
    runChild("\"have a child that crashes\"");
}

TEST(Probe, HasAChildThatCrashesBehindIt) {
    CloseHandle(startChild("\"crash soon\""));
}

TEST(Probe, LeavesInTheMiddle) {
    endAThread();
    TerminateProcess(GetCurrentProcess(), 0);
}

/// In the second of two runs.
TEST(Probe, LeavesTheSecondTime) {
    static int runs = 0;
    if (++runs == 2) std::exit(0);
}

TEST(Probe, IsEndedFromOutside) {
    endAThread();
    runChild("\"end " + std::to_string(GetCurrentProcessId()) + "\"");
}

TEST(Probe, LeavesAProcessBehind) {
    CloseHandle(startChild("stay"));
}

}  // namespace
