// The kernel calls on the simulated machine.
#include <process.h>
#include <windows.h>

#include <algorithm>
#include <new>

#include "Machine.h"

using simtime::Machine;
using simtime::Ms;
using simtime::never;
using simtime::Task;

namespace {

constexpr unsigned int looksAtOneMoment = 200;

struct SimEvent {
    bool isManual = false;
    bool isSignalled = false;
};

/// In the place of the system's: the same bytes, and all 0 before anybody has it.
struct Section {
    unsigned int owner;
    unsigned int depth;
};
static_assert(sizeof(Section) <= sizeof(CRITICAL_SECTION), "it does not fit");

/// Thrown by a thread that ends without returning from its entry.
struct ThreadEnd {
    DWORD exitCode;
};

Section& sectionOf(CRITICAL_SECTION* section) {
    return *reinterpret_cast<Section*>(section);
}

Machine& machine() {
    return Machine::present();
}

Ms spanOf(DWORD timeoutMs) {
    return timeoutMs == INFINITE ? never : timeoutMs;
}

std::uintptr_t numberOf(HANDLE handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

}  // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept {
    new (section) Section{0, 0};
}

// The library holds one lock at a time: who holds two can meet who holds them the other way round.
void EnterCriticalSection(CRITICAL_SECTION* section) noexcept {
    machine().mayPreempt();
    Section& wanted = sectionOf(section);
    Task& task = machine().current();
    while (wanted.depth != 0 && wanted.owner != task.id) machine().wait(never, section);
    wanted.owner = task.id;
    if (wanted.depth++ != 0) return;
    if (!task.held.empty()) machine().find("a thread holds two locks at once");
    task.held.push_back(section);
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept {
    Section& held = sectionOf(section);
    if (--held.depth != 0) return;
    held.owner = 0;
    auto& all = machine().current().held;
    all.erase(std::find(all.begin(), all.end(), section));
    machine().signal(section, true);
    machine().mayPreempt();
}

void DeleteCriticalSection(CRITICAL_SECTION*) noexcept {}

HANDLE CreateEventA(void*, BOOL isManual, BOOL, const char*) noexcept {
    ++machine().events;
    return new SimEvent{isManual != FALSE, false};
}

BOOL SetEvent(HANDLE event) noexcept {
    auto& signalled = *static_cast<SimEvent*>(event);
    if (!machine().signal(event, signalled.isManual) || signalled.isManual)
        signalled.isSignalled = true;
    machine().mayPreempt();
    return TRUE;
}

BOOL ResetEvent(HANDLE event) noexcept {
    static_cast<SimEvent*>(event)->isSignalled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE event, DWORD timeoutMs) noexcept {
    auto& awaited = *static_cast<SimEvent*>(event);
    machine().mayPreempt();
    if (awaited.isSignalled) {
        awaited.isSignalled = awaited.isManual;
        return WAIT_OBJECT_0;
    }
    if (timeoutMs == 0) return WAIT_TIMEOUT;
    if (!machine().current().held.empty()) machine().find("a thread waits with a lock held");
    return machine().wait(spanOf(timeoutMs), event) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*entry)(void*), void* argument, unsigned,
                              unsigned*) {
    Task& task = machine().start(
        [=]() -> std::uint32_t {
            try {
                return entry(argument);
            } catch (const ThreadEnd& end) {
                return end.exitCode;
            }
        },
        true);
    return Machine::handleOf(task);
}

BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode) noexcept {
    const Task* const task = machine().findByHandle(numberOf(thread));
    if (task == nullptr) return FALSE;
    *exitCode = task->exitCode;
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) noexcept {
    if (numberOf(handle) % 2 == 0) {
        --machine().events;
        delete static_cast<SimEvent*>(handle);
        return TRUE;
    }
    Task* const task = machine().findByHandle(numberOf(handle));
    if (task == nullptr) return FALSE;
    machine().closeHandle(*task);
    return TRUE;
}

HANDLE OpenThread(DWORD, BOOL, DWORD id) noexcept {
    SetLastError(machine().find(id) != nullptr ? 0 : ERROR_INVALID_PARAMETER);
    return nullptr;
}

DWORD GetProcessIdOfThread(HANDLE) noexcept {
    return GetCurrentProcessId();
}

DWORD GetCurrentProcessId() noexcept {
    return 4;
}

DWORD GetLastError() noexcept {
    return machine().current().lastError;
}

void SetLastError(DWORD error) noexcept {
    machine().current().lastError = error;
}

BOOL GetModuleHandleExA(DWORD, const char* address, HMODULE* module) noexcept {
    *module = const_cast<char*>(address);  // one for all; it must only not be null
    return TRUE;
}

BOOL FreeLibrary(HMODULE) noexcept {
    return TRUE;
}

void FreeLibraryAndExitThread(HMODULE, DWORD exitCode) {
    throw ThreadEnd{exitCode};
}

DWORD GetCurrentThreadId() noexcept {
    return machine().current().id;
}

DWORD GetTickCount() noexcept {
    machine().mayPreempt();
    machine().spin(machine().current().looksAtClock, looksAtOneMoment);
    return machine().tickCount();
}

void Sleep(DWORD ms) noexcept {
    if (!machine().current().held.empty()) machine().find("a thread sleeps with a lock held");
    machine().wait(spanOf(ms), nullptr);
}
