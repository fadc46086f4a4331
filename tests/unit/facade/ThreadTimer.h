#pragma once

#include <windows.h>

#include <atomic>

/// A timer of the calling thread: runs once somebody dispatches the thread's window messages.
/// One at a time.
class ThreadTimer {
public:
    explicit ThreadTimer(unsigned int ms) {
        ran_ = false;
        PostThreadMessageA(GetCurrentThreadId(), WM_NULL, 0, 0);  // makes the queue
        id_ = SetTimer(nullptr, 0, ms, note);
    }
    ~ThreadTimer() { KillTimer(nullptr, id_); }
    ThreadTimer(const ThreadTimer&) = delete;
    ThreadTimer& operator=(const ThreadTimer&) = delete;

    bool hasRun() const { return ran_; }

private:
    static void CALLBACK note(HWND, UINT, UINT_PTR timer, DWORD) {
        KillTimer(nullptr, timer);
        ran_ = true;
    }

    static inline std::atomic<bool> ran_{false};
    UINT_PTR id_;
};
