#pragma once

#include <windows.h>

/// The part of the framework's window class that the transport needs, on plain Win32, under the
/// framework's own names: a build that has the framework includes its header instead.

class CWnd;

/// One handled message of a class, and the list of them with the base class's list behind it.
struct AFX_MSGMAP_ENTRY {
    UINT nMessage;
    LRESULT (*dispatch)(CWnd& window, WPARAM wParam, LPARAM lParam);
};
struct AFX_MSGMAP {
    const AFX_MSGMAP* (*baseMap)();
    const AFX_MSGMAP_ENTRY* entries;
};

/// A window whose messages are handled by member functions. It belongs to the thread that creates
/// it; destroying the object destroys the window.
class CWnd {
public:
    CWnd() = default;
    virtual ~CWnd();
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;

    /// FALSE if the system refuses; the last-error code then tells why.
    BOOL CreateEx(DWORD exStyle, const char* className, const char* windowName, DWORD style, int x,
                  int y, int width, int height, HWND parent, HMENU menu);
    BOOL DestroyWindow();

    /// The object of a window that the calling thread created; null for every other window.
    static CWnd* FromHandle(HWND window);

    /// Disable and re-enable the window while a modal one is up. Called by the framework, of which
    /// the part with modal windows is not needed here: nothing calls them.
    virtual void BeginModalState();
    virtual void EndModalState();

    HWND m_hWnd = nullptr;

protected:
    virtual const AFX_MSGMAP* GetMessageMap() const;
    static const AFX_MSGMAP* GetThisMessageMap();

private:
    friend const char* AfxRegisterWndClass(UINT classStyle, HCURSOR cursor, HBRUSH background,
                                           HICON icon);
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);
};

/// Registers (once per set of properties) a class for CWnd windows and returns its name, which
/// lasts as long as this module; null if the system refuses. The classes go with the module.
const char* AfxRegisterWndClass(UINT classStyle, HCURSOR cursor = nullptr,
                                HBRUSH background = nullptr, HICON icon = nullptr);

#define DECLARE_MESSAGE_MAP()                         \
protected:                                            \
    static const AFX_MSGMAP* GetThisMessageMap();     \
    const AFX_MSGMAP* GetMessageMap() const override; \
                                                      \
public:

#define BEGIN_MESSAGE_MAP(Class, Base)                                           \
    const AFX_MSGMAP* Class::GetMessageMap() const {                             \
        return Class::GetThisMessageMap();                                       \
    }                                                                            \
    const AFX_MSGMAP* Class::GetThisMessageMap() {                               \
        using ThisClass = Class;                                                 \
        struct BaseMap : Base {                                                  \
            static const AFX_MSGMAP* get() { return Base::GetThisMessageMap(); } \
        };                                                                       \
        static const AFX_MSGMAP_ENTRY entries[] = {
#define ON_WM_COPYDATA()                                                        \
    {WM_COPYDATA, [](CWnd& window, WPARAM wParam, LPARAM lParam) -> LRESULT {   \
         CWnd* const sender = CWnd::FromHandle(reinterpret_cast<HWND>(wParam)); \
         auto* const data = reinterpret_cast<COPYDATASTRUCT*>(lParam);          \
         return static_cast<ThisClass&>(window).OnCopyData(sender, data);       \
     }},

#define END_MESSAGE_MAP()                                   \
    { 0, nullptr }                                          \
    }                                                       \
    ;                                                       \
    static const AFX_MSGMAP map = {&BaseMap::get, entries}; \
    return &map;                                            \
    }
