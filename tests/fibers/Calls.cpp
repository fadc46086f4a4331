// The kernel calls of the library on threads of a scheduler.
#include "Calls.h"

#include <process.h>
#include <windows.h>

#include <algorithm>
#include <new>

#include "native/ThreadEntry.h"
#include "Scheduler.h"

using fibers::Scheduler;
using fibers::Task;

namespace {

/// Its handle is its address: one that is used behind its end is the address sanitizer's to find.
struct Event {
    const bool isManual;
    bool isSignalled;
};

/// In the place of the system's: the same bytes, and all 0 before anybody has it.
struct Section {
    unsigned int owner;
    unsigned int depth;
};
static_assert(sizeof(Section) <= sizeof(CRITICAL_SECTION), "it does not fit");

int events = 0;

Section& sectionOf(CRITICAL_SECTION* section) {
    return *reinterpret_cast<Section*>(section);
}

Scheduler& scheduler() {
    return Scheduler::present();
}

fibers::Ms spanOf(DWORD timeoutMs) {
    return timeoutMs == INFINITE ? fibers::never : timeoutMs;
}

std::uintptr_t numberOf(HANDLE handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

}  // namespace

int fibers::openEvents() {
    return events;
}

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept {
    new (section) Section{0, 0};
}

// The library holds one lock at a time: who holds two can meet who holds them the other way round.
void EnterCriticalSection(CRITICAL_SECTION* section) noexcept {
    scheduler().mayPreempt();
    Section& wanted = sectionOf(section);
    Task& task = scheduler().current();
    if (!task.held.empty() && wanted.owner != task.id)
        scheduler().find("a thread takes a second lock");
    while (wanted.depth != 0 && wanted.owner != task.id) scheduler().wait(fibers::never, section);
    wanted.owner = task.id;
    if (wanted.depth++ == 0) task.held.push_back(section);
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept {
    Section& held = sectionOf(section);
    if (--held.depth != 0) return;
    held.owner = 0;
    auto& all = scheduler().current().held;
    all.erase(std::find(all.begin(), all.end(), section));
    scheduler().signal(section, true);
    scheduler().mayPreempt();
}

void DeleteCriticalSection(CRITICAL_SECTION*) noexcept {}

HANDLE CreateEventA(void*, BOOL isManual, BOOL isSignalled, const char*) noexcept {
    ++events;
    return new Event{isManual != FALSE, isSignalled != FALSE};
}

BOOL SetEvent(HANDLE event) noexcept {
    auto& signalled = *static_cast<Event*>(event);
    if (!scheduler().signal(event, signalled.isManual) || signalled.isManual)
        signalled.isSignalled = true;
    scheduler().mayPreempt();
    return TRUE;
}

BOOL ResetEvent(HANDLE event) noexcept {
    static_cast<Event*>(event)->isSignalled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE event, DWORD timeoutMs) noexcept {
    auto& awaited = *static_cast<Event*>(event);
    scheduler().mayPreempt();
    if (awaited.isSignalled) {
        awaited.isSignalled = awaited.isManual;
        return WAIT_OBJECT_0;
    }
    if (timeoutMs == 0) return WAIT_TIMEOUT;
    return scheduler().wait(spanOf(timeoutMs), event) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*entry)(void*), void* argument, unsigned,
                              unsigned*) {
    const Task& task = scheduler().start(
        [=] { scheduler().current().exitCode = native::runThread(entry, argument); }, true);
    return Scheduler::handleOf(task);
}

BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode) noexcept {
    const Task* const task = scheduler().taskByHandle(numberOf(thread));
    if (task == nullptr) return FALSE;
    *exitCode = task->exitCode;
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) noexcept {
    if (numberOf(handle) % 2 == 0) {
        --events;
        delete static_cast<Event*>(handle);
        return TRUE;
    }
    Task* const task = scheduler().taskByHandle(numberOf(handle));
    if (task == nullptr) return FALSE;
    scheduler().closeHandle(*task);
    return TRUE;
}

HANDLE OpenThread(DWORD, BOOL, DWORD id) noexcept {
    SetLastError(scheduler().taskOf(id) != nullptr ? 0 : ERROR_INVALID_PARAMETER);
    return nullptr;
}

DWORD GetLastError() noexcept {
    return scheduler().current().lastError;
}

void SetLastError(DWORD error) noexcept {
    scheduler().current().lastError = error;
}

DWORD GetCurrentThreadId() noexcept {
    return scheduler().current().id;
}

DWORD GetTickCount() noexcept {
    scheduler().mayPreempt();
    scheduler().lookAtClock();
    return scheduler().tickCount();
}

void Sleep(DWORD ms) noexcept {
    scheduler().wait(spanOf(ms), nullptr);
}

void GetLocalTime(SYSTEMTIME* now) noexcept {
    *now = {2020, 1, 2, 3, 4, 5};
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept {
    counter->QuadPart = static_cast<long long>(scheduler().now()) * 1000000;
    return TRUE;
}
