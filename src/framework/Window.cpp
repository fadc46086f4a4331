#include "framework/Window.h"

#include <cstdio>
#include <string>

#include "framework/Application.h"
#include "framework/WindowClasses.h"

namespace {

/// A name of its own for every set of properties.
std::string classNameFor(const WNDCLASSA& windowClass) {
    char name[96];
    std::snprintf(name, sizeof name, "QorWindow:%X:%p:%p:%p", windowClass.style,
                  static_cast<void*>(windowClass.hCursor),
                  static_cast<void*>(windowClass.hbrBackground),
                  static_cast<void*>(windowClass.hIcon));
    return name;
}

}  // namespace

CWnd::~CWnd() {
    CWnd::DestroyWindow();
}

BOOL CWnd::CreateEx(DWORD exStyle, const char* className, const char* windowName, DWORD style,
                    int x, int y, int width, int height, HWND parent, HMENU menu) {
    return CreateWindowExA(exStyle, className, windowName, style, x, y, width, height, parent, menu,
                           AfxThisModule(), this) != nullptr;
}

BOOL CWnd::DestroyWindow() {
    return m_hWnd != nullptr && ::DestroyWindow(m_hWnd);
}

CWnd* CWnd::FromHandle(HWND window) {
    if (GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId()) return nullptr;
    if (GetClassLongPtrA(window, GCLP_WNDPROC) != reinterpret_cast<ULONG_PTR>(procedure))
        return nullptr;
    return reinterpret_cast<CWnd*>(GetWindowLongPtrA(window, GWLP_USERDATA));
}

void CWnd::BeginModalState() {
    EnableWindow(m_hWnd, FALSE);
}

void CWnd::EndModalState() {
    EnableWindow(m_hWnd, TRUE);
}

const AFX_MSGMAP* CWnd::GetMessageMap() const {
    return GetThisMessageMap();
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, nullptr}};
    static const AFX_MSGMAP map = {nullptr, entries};
    return &map;
}

LRESULT CALLBACK CWnd::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* const created = reinterpret_cast<CREATESTRUCTA*>(lParam);
        static_cast<CWnd*>(created->lpCreateParams)->m_hWnd = window;
        SetWindowLongPtrA(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(created->lpCreateParams));
    }
    auto* const object = reinterpret_cast<CWnd*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (object == nullptr) return DefWindowProcA(window, message, wParam, lParam);
    const LRESULT result = object->handle(message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrA(window, GWLP_USERDATA, 0);
        object->m_hWnd = nullptr;
    }
    return result;
}

LRESULT CWnd::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    const AFX_MSGMAP* map = GetMessageMap();
    while (map != nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->entries; entry->dispatch != nullptr; ++entry)
            if (entry->nMessage == message) return entry->dispatch(*this, wParam, lParam);
        map = map->baseMap != nullptr ? map->baseMap() : nullptr;
    }
    return DefWindowProcA(m_hWnd, message, wParam, lParam);
}

const char* AfxRegisterWndClass(UINT classStyle, HCURSOR cursor, HBRUSH background, HICON icon) {
    WNDCLASSA windowClass = {};
    windowClass.style = classStyle;
    windowClass.lpfnWndProc = CWnd::procedure;
    windowClass.hInstance = AfxThisModule();
    windowClass.hCursor = cursor;
    windowClass.hbrBackground = background;
    windowClass.hIcon = icon;
    return moduleClasses().add(windowClass, classNameFor(windowClass));
}
