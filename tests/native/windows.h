#pragma once

#include <pthread.h>

#include <cstdint>

/// The few kernel calls that the library's own sources of `common/` and `trace/` make, under the
/// system's names. EveryKernel.cpp has some; Handles.cpp, Sections.cpp and Time.cpp have the rest
/// on the threads of the native system: so those very sources run under the thread sanitizer.
/// Nothing here orders threads more strongly than the calls that it stands for: what a lock in
/// here hides, the sanitizer does not see.

using BOOL = int;
using DWORD = std::uint32_t;
using WORD = std::uint16_t;
using HANDLE = void*;
using HMODULE = void*;
using CRITICAL_SECTION = pthread_mutex_t;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD INFINITE = 0xFFFFFFFFu;
constexpr DWORD STILL_ACTIVE = 259;

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
void EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept;

/// Events that reset themselves and begin without a signal; the arguments say nothing else.
HANDLE CreateEventA(void* security, BOOL manualReset, BOOL signalled, const char* name) noexcept;
BOOL SetEvent(HANDLE event) noexcept;
BOOL ResetEvent(HANDLE event) noexcept;
DWORD WaitForSingleObject(HANDLE event, DWORD timeoutMs) noexcept;

/// As the system's: a thread's handle that was closed is no longer known, which is no error.
BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode) noexcept;
BOOL CloseHandle(HANDLE handle) noexcept;
DWORD GetCurrentThreadId() noexcept;

/// There is never a handle; the error tells whether there is the thread.
constexpr DWORD THREAD_QUERY_LIMITED_INFORMATION = 0x0800;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
HANDLE OpenThread(DWORD access, BOOL inherits, DWORD id) noexcept;
DWORD GetProcessIdOfThread(HANDLE thread) noexcept;
DWORD GetCurrentProcessId() noexcept;
DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;

/// Nothing is ever unloaded here; only the thread's end is one.
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;
BOOL GetModuleHandleExA(DWORD flags, const char* address, HMODULE* module) noexcept;
BOOL FreeLibrary(HMODULE module) noexcept;
[[noreturn]] void FreeLibraryAndExitThread(HMODULE module, DWORD exitCode);

DWORD GetTickCount() noexcept;
void Sleep(DWORD ms) noexcept;

struct SYSTEMTIME {
    WORD wYear, wMonth, wDay, wHour, wMinute, wSecond;
};
union LARGE_INTEGER {
    long long QuadPart;
};
void GetLocalTime(SYSTEMTIME* now) noexcept;
BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept;
BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) noexcept;
/// There is no debugger.
void OutputDebugStringA(const char* text) noexcept;

/// Windows, as far as the headers of the transport name them.
using UINT = unsigned int;
using LRESULT = std::intptr_t;
using LPARAM = std::intptr_t;
using WPARAM = std::uintptr_t;
using HWND = void*;
using HMENU = void*;
using HCURSOR = void*;
using HBRUSH = void*;
using HICON = void*;
#define CALLBACK
constexpr UINT WM_COPYDATA = 0x4A;
constexpr UINT SMTO_BLOCK = 1;
constexpr UINT SMTO_ABORTIFHUNG = 2;
struct COPYDATASTRUCT {
    std::uintptr_t dwData;
    DWORD cbData;
    void* lpData;
};
BOOL EnableWindow(HWND window, BOOL enable) noexcept;

/// Values per thread, and texts in code pages; a program that has any brings these itself.
constexpr DWORD FLS_OUT_OF_INDEXES = 0xFFFFFFFFu;
DWORD FlsAlloc(void (*release)(void*)) noexcept;
BOOL FlsFree(DWORD index) noexcept;
void* FlsGetValue(DWORD index) noexcept;
BOOL FlsSetValue(DWORD index, void* value) noexcept;
constexpr UINT CP_ACP = 0;
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD MB_ERR_INVALID_CHARS = 8;
constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;
UINT GetACP() noexcept;
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* bytes, int count, wchar_t* wide,
                        int room);
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int count, char* bytes,
                        int room, const char* replacement, BOOL* replaced);

/// Settings files; a program that reads any brings these itself.
DWORD GetPrivateProfileStringA(const char* section, const char* key, const char* standard,
                               char* buffer, DWORD size, const char* path) noexcept;
unsigned int GetPrivateProfileIntA(const char* section, const char* key, int standard,
                                   const char* path) noexcept;
int _stricmp(const char* left, const char* right) noexcept;
