#include <cstdio>

#include "framework/Application.h"
#include "framework/Window.h"

/// Makes and ends a window inside this library. Writes the name of its class, tells the module.
extern "C" __declspec(dllexport) HINSTANCE makeWindowInLibrary(char* className, unsigned length) {
    const char* const name = AfxRegisterWndClass(CS_DBLCLKS);
    if (name == nullptr) return nullptr;
    std::snprintf(className, length, "%s", name);
    CWnd window;
    const BOOL made = window.CreateEx(0, name, "probe", 0, 0, 0, 0, 0, nullptr, nullptr);
    return made ? AfxThisModule() : nullptr;
}
