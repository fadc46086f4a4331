// The kernel calls of the library on threads that run in turns (Fibers.h).
#include <process.h>
#include <windows.h>

#include <cstdint>
#include <map>
#include <memory>

#include "Fibers.h"

namespace {

DWORD lastError = 0;

/// An event, or a thread.
struct Object {
    bool isThread = false;
    bool staysSignalled = false;
    bool isSignalled = false;
    DWORD exitCode = STILL_ACTIVE;
    std::shared_ptr<DWORD> endOfThread;
};

/// By the number that is their handle: the address of a closed one could be another's.
std::map<std::uintptr_t, Object> objects;
std::uintptr_t lastHandle = 0;

std::uintptr_t numberOf(HANDLE handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

Object* find(HANDLE handle) {
    const auto found = objects.find(numberOf(handle));
    return found == objects.end() ? nullptr : &found->second;
}

std::uintptr_t keep(Object object) {
    lastHandle += 4;
    objects.emplace(lastHandle, std::move(object));
    return lastHandle;
}

struct ThreadEnd {
    DWORD exitCode;
};

struct Slot {
    void (*release)(void*);
    std::map<std::uint32_t, void*> values;  // by thread
};

std::map<DWORD, Slot> slots;
DWORD lastSlot = 0;

void releaseValuesOfThread() {
    for (auto& slot : slots) {
        const auto value = slot.second.values.extract(fibers::current());
        if (!value.empty() && value.mapped() != nullptr) slot.second.release(value.mapped());
    }
}

}  // namespace

HANDLE CreateEventA(void*, BOOL staysSignalled, BOOL isSignalled, const char*) noexcept {
    Object event;
    event.staysSignalled = staysSignalled != FALSE;
    event.isSignalled = isSignalled != FALSE;
    return reinterpret_cast<HANDLE>(keep(std::move(event)));
}

BOOL SetEvent(HANDLE event) noexcept {
    find(event)->isSignalled = true;
    return TRUE;
}

BOOL ResetEvent(HANDLE event) noexcept {
    find(event)->isSignalled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD timeoutMs) noexcept {
    const auto isSignalled = [&] {
        const Object* const event = find(handle);
        return event != nullptr && event->isSignalled;
    };
    if (!isSignalled() && !fibers::wait(isSignalled, timeoutMs)) return WAIT_TIMEOUT;
    Object& event = *find(handle);
    if (!event.staysSignalled) event.isSignalled = false;
    return WAIT_OBJECT_0;
}

std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*entry)(void*), void* argument, unsigned,
                              unsigned*) {
    Object thread;
    thread.isThread = true;
    thread.endOfThread = std::make_shared<DWORD>(STILL_ACTIVE);
    fibers::spawn([entry, argument, end = thread.endOfThread] {
        try {
            *end = entry(argument);
        } catch (const ThreadEnd& told) {
            *end = told.exitCode;
        }
        releaseValuesOfThread();
    });
    return keep(std::move(thread));
}

BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode) noexcept {
    const Object* const found = find(thread);
    if (found == nullptr || !found->isThread) return FALSE;
    *exitCode = *found->endOfThread;
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) noexcept {
    return objects.erase(numberOf(handle)) != 0 ? TRUE : FALSE;
}

HANDLE OpenThread(DWORD, BOOL, DWORD id) noexcept {
    SetLastError(fibers::isThere(id) ? 0 : ERROR_INVALID_PARAMETER);
    return nullptr;
}

DWORD GetProcessIdOfThread(HANDLE) noexcept {
    return GetCurrentProcessId();
}

DWORD GetCurrentProcessId() noexcept {
    return 1;
}

DWORD GetCurrentThreadId() noexcept {
    return fibers::current();
}

DWORD GetLastError() noexcept {
    return lastError;
}

void SetLastError(DWORD error) noexcept {
    lastError = error;
}

BOOL GetModuleHandleExA(DWORD, const char* address, HMODULE* module) noexcept {
    *module = const_cast<char*>(address);
    return TRUE;
}

BOOL FreeLibrary(HMODULE) noexcept {
    return TRUE;
}

void FreeLibraryAndExitThread(HMODULE, DWORD exitCode) {
    throw ThreadEnd{exitCode};
}

void InitializeCriticalSection(CRITICAL_SECTION*) noexcept {}

void EnterCriticalSection(CRITICAL_SECTION*) noexcept {
    fibers::noteLocked(1);
}

void LeaveCriticalSection(CRITICAL_SECTION*) noexcept {
    fibers::noteLocked(-1);
}

void DeleteCriticalSection(CRITICAL_SECTION*) noexcept {}

DWORD GetTickCount() noexcept {
    fibers::noteLook();
    return static_cast<DWORD>(fibers::nowMs());
}

void Sleep(DWORD ms) noexcept {
    fibers::wait([] { return false; }, ms == 0 ? 1 : ms);
}

void GetLocalTime(SYSTEMTIME* now) noexcept {
    *now = {2020, 1, 2, 3, 4, 5};
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept {
    counter->QuadPart = static_cast<long long>(fibers::nowMs()) * 1000000;
    return TRUE;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) noexcept {
    frequency->QuadPart = 1000000000;
    return TRUE;
}

void OutputDebugStringA(const char*) noexcept {}

// Values per thread. They are handed back at the end of the thread, or with the slot.
DWORD FlsAlloc(void (*release)(void*)) noexcept {
    slots.emplace(++lastSlot, Slot{release, {}});
    return lastSlot;
}

BOOL FlsFree(DWORD index) noexcept {
    const auto slot = slots.extract(index);
    for (const auto& value : slot.mapped().values)
        if (value.second != nullptr) slot.mapped().release(value.second);
    return TRUE;
}

void* FlsGetValue(DWORD index) noexcept {
    const auto& values = slots.at(index).values;
    const auto found = values.find(fibers::current());
    return found == values.end() ? nullptr : found->second;
}

BOOL FlsSetValue(DWORD index, void* value) noexcept {
    slots.at(index).values[fibers::current()] = value;
    return TRUE;
}
