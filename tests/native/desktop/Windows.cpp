// Windows and their classes.
#include <windows.h>

#include <utility>

#include "WindowTable.h"

using desktop::ThreadQueue;
using desktop::Window;
using desktop::windows;

namespace {

/// `success` as it is; of a failure the last-error code tells this reason.
BOOL orFail(bool success, DWORD reason) {
    if (!success) SetLastError(reason);
    return success ? TRUE : FALSE;
}

std::shared_ptr<Window> windowOf(HWND handle) {
    auto window = windows().find(handle);
    orFail(window != nullptr, ERROR_INVALID_WINDOW_HANDLE);
    return window;
}

/// It is in the table before its procedure first hears of it.
HWND create(const std::shared_ptr<Window>& window, void* parameter) {
    const HWND handle = windows().add(window);
    CREATESTRUCTA created{parameter};
    if (window->procedure(handle, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&created)) != FALSE)
        return handle;
    windows().remove(handle);
    return nullptr;
}

}  // namespace

ATOM RegisterClassA(const WNDCLASSA* windowClass) {
    const bool isNew = windows().addClass(windowClass->lpszClassName, windowClass->lpfnWndProc);
    return static_cast<ATOM>(orFail(isNew, ERROR_CLASS_ALREADY_EXISTS));
}

BOOL UnregisterClassA(const char* name, HINSTANCE) {
    return windows().removeClass(name) ? TRUE : FALSE;
}

HWND CreateWindowExA(DWORD, const char* className, const char* title, DWORD, int, int, int, int,
                     HWND parent, HMENU, HINSTANCE, void* parameter) {
    const WNDPROC procedure = windows().procedureOf(className);
    if (orFail(procedure != nullptr, ERROR_CANNOT_FIND_WND_CLASS) == FALSE) return nullptr;
    const auto window = std::make_shared<Window>();
    window->procedure = procedure;
    window->className = className;
    window->title = title;
    window->isTopLevel = parent != HWND_MESSAGE;
    window->thread = GetCurrentThreadId();
    window->queue = ThreadQueue::own();
    return create(window, parameter);
}

BOOL DestroyWindow(HWND handle) {
    const auto window = windowOf(handle);
    if (window == nullptr) return FALSE;
    if (orFail(window->thread == GetCurrentThreadId(), ERROR_ACCESS_DENIED) == FALSE) return FALSE;
    window->procedure(handle, WM_DESTROY, 0, 0);
    window->procedure(handle, WM_NCDESTROY, 0, 0);
    windows().remove(handle);
    window->queue->dropAllOf(handle);
    return TRUE;
}

HWND FindWindowA(const char*, const char* title) {
    return windows().newestTopLevel(title);
}

DWORD GetWindowThreadProcessId(HWND handle, DWORD* process) {
    const auto window = windowOf(handle);
    if (window == nullptr) return 0;
    if (process != nullptr) *process = GetCurrentProcessId();
    return window->thread;
}

ULONG_PTR GetClassLongPtrA(HWND handle, int) {
    const auto window = windowOf(handle);
    return window != nullptr ? reinterpret_cast<ULONG_PTR>(window->procedure) : 0;
}

LONG_PTR GetWindowLongPtrA(HWND handle, int) {
    const auto window = windowOf(handle);
    return window != nullptr ? window->userData : 0;
}

LONG_PTR SetWindowLongPtrA(HWND handle, int, LONG_PTR value) {
    const auto window = windowOf(handle);
    return window != nullptr ? std::exchange(window->userData, value) : 0;
}

LRESULT DefWindowProcA(HWND, UINT message, WPARAM, LPARAM) {
    return message == WM_NCCREATE ? TRUE : 0;
}

/// Nothing here shows a window or disables one.
BOOL EnableWindow(HWND, BOOL) noexcept {
    return FALSE;
}

BOOL IsHungAppWindow(HWND handle) {
    const auto window = windows().find(handle);
    return window != nullptr && window->queue->hangs() ? TRUE : FALSE;
}
