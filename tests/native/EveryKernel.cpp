// The kernel calls that are the same in every kernel, whatever its threads and clock are.
#include <windows.h>

#include "ThreadEntry.h"

namespace {

/// Thrown by a thread that ends without returning from its entry.
struct ThreadEnd {
    DWORD exitCode;
};

}  // namespace

DWORD native::runThread(unsigned (*entry)(void*), void* argument) {
    try {
        return entry(argument);
    } catch (const ThreadEnd& end) {
        return end.exitCode;
    }
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

DWORD GetCurrentProcessId() noexcept {
    return 4;  // the same in every run; it is compared with that of threads alone
}

DWORD GetProcessIdOfThread(HANDLE) noexcept {
    return GetCurrentProcessId();
}

// As QueryPerformanceCounter has it everywhere: in nanoseconds.
BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) noexcept {
    frequency->QuadPart = 1000000000;
    return TRUE;
}

void OutputDebugStringA(const char*) noexcept {}
