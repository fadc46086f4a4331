#pragma once

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

namespace torture {

/// Ends the process, and says at what it was, when one thing takes too long.
class Watchdog {
public:
    Watchdog() : thread_([this] { watch(); }) {}
    ~Watchdog() {
        ending_ = true;
        thread_.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// What is done from now on.
    void expect(const std::string& what) {
        const std::lock_guard<std::mutex> guard(mutex_);
        what_ = what;
        since_ = GetTickCount64();
    }

private:
    static constexpr ULONGLONG patienceMs = 120000;

    void watch() {
        while (!ending_) {
            Sleep(20);
            const std::lock_guard<std::mutex> guard(mutex_);
            if (GetTickCount64() - since_ < patienceMs) continue;
            std::printf("FAILED: hangs: %s\n", what_.c_str());
            std::fflush(stdout);
            TerminateProcess(GetCurrentProcess(), 3);
        }
    }

    std::mutex mutex_;
    std::string what_ = "the beginning";
    ULONGLONG since_ = GetTickCount64();
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

}  // namespace torture
