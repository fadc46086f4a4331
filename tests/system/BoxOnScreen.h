#pragma once

#include <windows.h>

#include <string>

#include "Waiting.h"

/// The message box of that caption on the screen, when it is there; null if it does not come.
inline HWND awaitBoxOnScreen(const std::string& caption) {
    HWND box = nullptr;
    eventually(20000, [&] {
        box = FindWindowA("#32770", caption.c_str());
        return box != nullptr;
    });
    return box;
}
