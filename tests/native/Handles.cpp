#include <process.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "ThreadEntry.h"

namespace {

thread_local DWORD lastError = 0;

/// The handle of an event is its address. Each has a mutex of its own, so that events order only
/// the threads that share them. A thread that has been let through may delete the event at once:
/// the signalling one touches nothing after the mutex.
class AutoResetEvent {
public:
    void signal() {
        const std::lock_guard<std::mutex> guard(mutex_);
        signalled_ = true;
        changed_.notify_one();
    }
    void reset() {
        const std::lock_guard<std::mutex> guard(mutex_);
        signalled_ = false;
    }
    bool wait(DWORD timeoutMs) {
        std::unique_lock<std::mutex> guard(mutex_);
        const auto isSignalled = [&] { return signalled_; };
        if (timeoutMs == INFINITE)
            changed_.wait(guard, isSignalled);
        else if (!changed_.wait_for(guard, std::chrono::milliseconds(timeoutMs), isSignalled))
            return false;
        signalled_ = false;
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool signalled_ = false;
};

using ExitCode = std::shared_ptr<std::atomic<DWORD>>;

/// The threads whose handles are open. Their handles are odd numbers, which no event has.
struct ThreadTable {
    std::mutex mutex;
    std::map<std::uintptr_t, ExitCode> exitCodes;
    std::uintptr_t next = 1;
};

ThreadTable& threads() {
    static auto* const table = new ThreadTable;  // also for threads that outlive the others
    return *table;
}

std::uintptr_t numberOf(HANDLE handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

AutoResetEvent* eventOf(HANDLE handle) {
    return static_cast<AutoResetEvent*>(handle);
}

}  // namespace

HANDLE CreateEventA(void*, BOOL, BOOL, const char*) noexcept {
    return new AutoResetEvent;
}

BOOL SetEvent(HANDLE event) noexcept {
    eventOf(event)->signal();
    return TRUE;
}

BOOL ResetEvent(HANDLE event) noexcept {
    eventOf(event)->reset();
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE event, DWORD timeoutMs) noexcept {
    return eventOf(event)->wait(timeoutMs) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*entry)(void*), void* argument, unsigned,
                              unsigned*) {
    const ExitCode exitCode = std::make_shared<std::atomic<DWORD>>(STILL_ACTIVE);
    try {
        std::thread([=] { *exitCode = native::runThread(entry, argument); }).detach();
    } catch (const std::system_error&) {
        return 0;
    }
    ThreadTable& table = threads();
    const std::lock_guard<std::mutex> guard(table.mutex);
    const std::uintptr_t handle = table.next;
    table.next += 2;
    table.exitCodes.emplace(handle, exitCode);
    return handle;
}

BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode) noexcept {
    ThreadTable& table = threads();
    const std::lock_guard<std::mutex> guard(table.mutex);
    const auto found = table.exitCodes.find(numberOf(thread));
    if (found == table.exitCodes.end()) return FALSE;
    *exitCode = *found->second;
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) noexcept {
    if (numberOf(handle) % 2 == 0) {
        delete eventOf(handle);
        return TRUE;
    }
    ThreadTable& table = threads();
    const std::lock_guard<std::mutex> guard(table.mutex);
    return table.exitCodes.erase(numberOf(handle)) != 0 ? TRUE : FALSE;
}

HANDLE OpenThread(DWORD, BOOL, DWORD id) noexcept {
    const bool isThere = syscall(SYS_tgkill, getpid(), static_cast<pid_t>(id), 0) == 0;
    SetLastError(isThere ? 0 : ERROR_INVALID_PARAMETER);
    return nullptr;
}

DWORD GetLastError() noexcept {
    return lastError;
}

void SetLastError(DWORD error) noexcept {
    lastError = error;
}

DWORD GetCurrentThreadId() noexcept {
    return static_cast<DWORD>(syscall(SYS_gettid));
}
