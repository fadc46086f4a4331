#pragma once

/// The functions of the system that can fail. ROW(function, what it gives then, the error, whether
/// it has done its work all the same: what would be kept for good by the system is none of ours).
#define QOR_FALLIBLE(ROW)                                            \
    ROW(CloseHandle, 0, ERROR_INVALID_HANDLE, true)                  \
    ROW(CreateActCtxA, -1, ERROR_NOT_ENOUGH_MEMORY, false)           \
    ROW(CreateEventA, 0, ERROR_NOT_ENOUGH_MEMORY, false)             \
    ROW(CreateProcessA, 0, ERROR_FILE_NOT_FOUND, false)              \
    ROW(DeleteFileA, 0, ERROR_ACCESS_DENIED, false)                  \
    ROW(FlsAlloc, -1, ERROR_NOT_ENOUGH_MEMORY, false)                \
    ROW(FlsSetValue, 0, ERROR_NOT_ENOUGH_MEMORY, false)              \
    ROW(FormatMessageA, 0, ERROR_NOT_ENOUGH_MEMORY, false)           \
    ROW(GetExitCodeThread, 0, ERROR_ACCESS_DENIED, false)            \
    ROW(GetFileAttributesA, -1, ERROR_SHARING_VIOLATION, false)      \
    ROW(GetModuleFileNameA, 0, ERROR_NOT_ENOUGH_MEMORY, false)       \
    ROW(GetModuleHandleA, 0, ERROR_MOD_NOT_FOUND, false)             \
    ROW(GetModuleHandleExA, 0, ERROR_MOD_NOT_FOUND, false)           \
    ROW(GetPrivateProfileIntA, 0, ERROR_FILE_NOT_FOUND, false)       \
    ROW(GetPrivateProfileStringA, 0, ERROR_FILE_NOT_FOUND, true)     \
    ROW(GetProcessIdOfThread, 0, ERROR_ACCESS_DENIED, false)         \
    ROW(OpenThread, 0, ERROR_ACCESS_DENIED, false)                   \
    ROW(ResetEvent, 0, ERROR_INVALID_HANDLE, false)                  \
    ROW(SetEvent, 0, ERROR_INVALID_HANDLE, false)                    \
    ROW(WaitForSingleObject, -1, ERROR_INVALID_HANDLE, false)        \
    ROW(CreateWindowExA, 0, ERROR_NOT_ENOUGH_MEMORY, false)          \
    ROW(DestroyWindow, 0, ERROR_ACCESS_DENIED, true)                 \
    ROW(FindWindowA, 0, ERROR_ACCESS_DENIED, false)                  \
    ROW(GetClassLongA, 0, ERROR_INVALID_WINDOW_HANDLE, false)        \
    ROW(GetForegroundWindow, 0, 0, false)                            \
    ROW(GetWindowLongA, 0, ERROR_INVALID_WINDOW_HANDLE, false)       \
    ROW(GetWindowThreadProcessId, 0, ERROR_ACCESS_DENIED, false)     \
    ROW(MessageBoxA, 0, ERROR_NOT_ENOUGH_MEMORY, false)              \
    ROW(MsgWaitForMultipleObjectsEx, -1, ERROR_ACCESS_DENIED, false) \
    ROW(PeekMessageA, 0, 0, false)                                   \
    ROW(RegisterClassA, 0, ERROR_NOT_ENOUGH_MEMORY, false)           \
    ROW(ReplyMessage, 0, 0, false)                                   \
    ROW(SendMessageTimeoutA, 0, ERROR_ACCESS_DENIED, false)          \
    ROW(SetWindowLongA, 0, ERROR_INVALID_WINDOW_HANDLE, true)        \
    ROW(UnregisterClassA, 0, ERROR_CLASS_HAS_WINDOWS, true)          \
    ROW(WaitForInputIdle, -1, ERROR_ACCESS_DENIED, false)            \
    ROW(WSAAsyncSelect, -1, WSAENOBUFS, false)                       \
    ROW(WSACleanup, -1, WSAENETDOWN, true)                           \
    ROW(WSAStartup, WSASYSNOTREADY, 0, false)                        \
    ROW(bind, -1, WSAENOBUFS, false)                                 \
    ROW(closesocket, -1, WSAENETDOWN, true)                          \
    ROW(connect, -1, WSAENETUNREACH, false)                          \
    ROW(getaddrinfo, WSA_NOT_ENOUGH_MEMORY, 0, false)                \
    ROW(recv, -1, WSAECONNRESET, false)                              \
    ROW(send, -1, WSAECONNRESET, false)                              \
    ROW(setsockopt, -1, WSAENOBUFS, false)                           \
    ROW(socket, -1, WSAEMFILE, false)                                \
    ROW(_access, -1, 0, false)                                       \
    ROW(_beginthreadex, 0, ERROR_NOT_ENOUGH_MEMORY, false)           \
    ROW(_fullpath, 0, 0, false)                                      \
    ROW(fclose, -1, 0, true)                                         \
    ROW(fflush, -1, 0, false)                                        \
    ROW(fgets, 0, 0, false)                                          \
    ROW(fopen, 0, ERROR_ACCESS_DENIED, false)                        \
    ROW(fputs, -1, 0, false)                                         \
    ROW(fread, 0, 0, false)                                          \
    ROW(fwrite, 0, 0, false)                                         \
    ROW(setvbuf, -1, 0, false)

namespace torture {

/// What cannot fail, or whose result is of no use to anybody.
inline const char* const infallible[] = {
    "DefWindowProcA",
    "DeleteCriticalSection",
    "DispatchMessageA",
    "EnableWindow",
    "EnterCriticalSection",
    "FlsFree",
    "FlsGetValue",
    "FreeLibrary",
    "FreeLibraryAndExitThread",
    "GetACP",
    "GetCommandLineA",
    "GetCurrentProcessId",
    "GetCurrentThreadId",
    "GetLastError",
    "GetLocalTime",
    "GetTickCount",
    "InSendMessageEx",
    "InitializeCriticalSection",  // which fails on no system since Windows 7
    "IsHungAppWindow",
    "LeaveCriticalSection",
    "LocalFree",
    "OutputDebugStringA",
    "PostQuitMessage",
    "QueryPerformanceCounter",
    "QueryPerformanceFrequency",
    "ReleaseActCtx",
    "SetLastError",
    "Sleep",
    "TranslateMessage",
    "WSAGetLastError",
    "WSASetLastError",
    "freeaddrinfo"};

/// What the run-time library inside of the module calls by itself, of these two, and what guards
/// its stacks.
inline const char* const ofRunTime[] = {"GetCurrentProcess",
                                        "GetModuleHandleW",
                                        "GetProcAddress",
                                        "GetSystemTimeAsFileTime",
                                        "IsDBCSLeadByteEx",
                                        "LoadLibraryA",
                                        "MultiByteToWideChar",
                                        "RtlCaptureContext",
                                        "SetUnhandledExceptionFilter",
                                        "TerminateProcess",
                                        "TlsGetValue",
                                        "UnhandledExceptionFilter",
                                        "VirtualProtect",
                                        "VirtualQuery",
                                        "WideCharToMultiByte",
                                        "__mb_cur_max",
                                        "_amsg_exit",
                                        "_beginthread",
                                        "_errno",
                                        "_initterm",
                                        "_iob",
                                        "_lock",
                                        "_stricmp",
                                        "_time64",
                                        "_unlock",
                                        "abort",
                                        "atoi",
                                        "calloc",
                                        "fputc",
                                        "free",
                                        "localeconv",
                                        "malloc",
                                        "memchr",
                                        "memcmp",
                                        "memcpy",
                                        "memmove",
                                        "memset",
                                        "realloc",
                                        "rewind",
                                        "setlocale",
                                        "strchr",
                                        "strerror",
                                        "strlen",
                                        "strncmp",
                                        "strtol",
                                        "strtoul",
                                        "tolower",
                                        "vfprintf",
                                        "wcslen"};

/// The same of a module that brings the run-time libraries of C++ and its threads along.
inline const char* const ofRunTimesInside[] = {"AddVectoredExceptionHandler",
                                               "CreateSemaphoreA",
                                               "DuplicateHandle",
                                               "GetCurrentThread",
                                               "GetHandleInformation",
                                               "GetProcessAffinityMask",
                                               "GetThreadContext",
                                               "GetThreadPriority",
                                               "GetTickCount64",
                                               "IsDebuggerPresent",
                                               "LoadLibraryW",
                                               "OpenProcess",
                                               "RaiseException",
                                               "ReleaseSemaphore",
                                               "RemoveVectoredExceptionHandler",
                                               "ResumeThread",
                                               "SetProcessAffinityMask",
                                               "SetThreadContext",
                                               "SetThreadPriority",
                                               "SuspendThread",
                                               "TlsAlloc",
                                               "TlsSetValue",
                                               "TryEnterCriticalSection",
                                               "WaitForMultipleObjects",
                                               "_assert",
                                               "_close",
                                               "_endthreadex",
                                               "_read",
                                               "_setjmp3",
                                               "_strdup",
                                               "_ultoa",
                                               "exit",
                                               "fprintf",
                                               "getenv",
                                               "isspace",
                                               "longjmp",
                                               "printf",
                                               "sprintf",
                                               "strcmp",
                                               "strstr"};

/// Allocation is one of their imports and has a row of its own.
inline const char* const runTimeModules[] = {"libgcc_s_dw2-1.dll", "libstdc++-6.dll"};

}  // namespace torture
