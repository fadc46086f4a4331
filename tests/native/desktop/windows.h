#pragma once

#include "../windows.h"

/// What the library's sources of `framework/` and `transport/` call besides: windows, messages
/// between threads, and what the framework asks of its module. As far as messages go, each thread
/// of the program stands for a process of its own. Here too nothing orders threads more strongly
/// than the system: a message orders two, and so does making or destroying a window, but no look at
/// one.

using HINSTANCE = HMODULE;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using ATOM = WORD;
using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
constexpr DWORD ERROR_TIMEOUT = 1460;

constexpr UINT WM_DESTROY = 0x02;
constexpr UINT WM_QUIT = 0x12;
constexpr UINT WM_NCCREATE = 0x81;
constexpr UINT WM_NCDESTROY = 0x82;
constexpr UINT PM_REMOVE = 1;
constexpr int GWLP_USERDATA = -21;
constexpr int GCLP_WNDPROC = -24;
constexpr DWORD ISMEX_SEND = 1;
constexpr DWORD ISMEX_REPLIED = 8;
constexpr DWORD QS_ALLINPUT = 0x4FF;
constexpr DWORD QS_SENDMESSAGE = 0x40;
constexpr DWORD MWMO_INPUTAVAILABLE = 4;
inline const HWND HWND_MESSAGE = reinterpret_cast<HWND>(LONG_PTR{-3});

struct WNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const char* lpszClassName;
};
struct CREATESTRUCTA {
    void* lpCreateParams;
};
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

ATOM RegisterClassA(const WNDCLASSA* windowClass);
/// Fails while there are windows of the class.
BOOL UnregisterClassA(const char* name, HINSTANCE module);
HWND CreateWindowExA(DWORD exStyle, const char* className, const char* title, DWORD style, int x,
                     int y, int width, int height, HWND parent, HMENU menu, HINSTANCE module,
                     void* parameter);
/// Only on the thread that has created it. A thread's windows also go with it.
BOOL DestroyWindow(HWND window);
/// Of several with one title the newest.
HWND FindWindowA(const char* className, const char* title);
DWORD GetWindowThreadProcessId(HWND window, DWORD* process);
ULONG_PTR GetClassLongPtrA(HWND window, int index);
LONG_PTR GetWindowLongPtrA(HWND window, int index);
LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value);
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// What others have sent is handled in here first, whatever is looked for.
BOOL PeekMessageA(MSG* message, HWND window, UINT lowest, UINT highest, UINT flags);
LRESULT DispatchMessageA(const MSG* message);
BOOL TranslateMessage(const MSG* message);
BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
void PostQuitMessage(int exitCode);
/// For one handle at most, an event, and input of any kind.
DWORD MsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, DWORD timeoutMs, DWORD kinds,
                                  DWORD flags);
/// A copy-data message takes its bytes with it, as it does to another process: a sender that has
/// given up may free them.
LRESULT SendMessageTimeoutA(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT flags,
                            UINT timeoutMs, DWORD_PTR* result);
DWORD InSendMessageEx(void* reserved);
BOOL ReplyMessage(LRESULT result);
BOOL IsHungAppWindow(HWND window);

/// The module, and the activation context of its manifest: it has none.
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
constexpr int MAX_PATH = 260;
constexpr DWORD ACTCTX_FLAG_RESOURCE_NAME_VALID = 8;
constexpr DWORD ACTCTX_FLAG_HMODULE_VALID = 0x80;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(LONG_PTR{-1});
struct ACTCTXA {
    DWORD cbSize;
    DWORD dwFlags;
    const char* lpSource;
    const char* lpResourceName;
    HMODULE hModule;
};
inline const char* MAKEINTRESOURCEA(ULONG_PTR number) {
    return reinterpret_cast<const char*>(number);
}
HANDLE CreateActCtxA(const ACTCTXA* context);
void ReleaseActCtx(HANDLE context);
HMODULE GetModuleHandleA(const char* name);
DWORD GetModuleFileNameA(HMODULE module, char* path, DWORD size);
char* GetCommandLineA();

/// What the client asks, see Client.cpp.
HWND GetForegroundWindow();
int MessageBoxA(HWND owner, const char* text, const char* caption, UINT type);
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFFu;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
DWORD GetFileAttributesA(const char* path);
