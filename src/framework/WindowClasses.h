#pragma once

#include <windows.h>

#include <set>
#include <string>

#include "common/Guarded.h"
#include "framework/Application.h"

/// The names of the window classes that this module has registered. They go with the module:
/// the system would keep them, and with them the address of a procedure that is there no more.
/// Until then they stay, because a class that came and went with its windows could vanish between
/// one thread's look at it and that thread's first window.
class WindowClasses {
public:
    WindowClasses() = default;
    ~WindowClasses() {
        for (const std::string& name : *names_.lock())
            UnregisterClassA(name.c_str(), AfxThisModule());
    }
    WindowClasses(const WindowClasses&) = delete;
    WindowClasses& operator=(const WindowClasses&) = delete;

    /// Registers the class under `name` unless that is done already. The result lasts as long as
    /// the module; null if the system refuses.
    const char* add(WNDCLASSA windowClass, const std::string& name) {
        const auto names = names_.lock();
        const auto known = names->find(name);
        if (known != names->end()) return known->c_str();
        windowClass.lpszClassName = name.c_str();
        return RegisterClassA(&windowClass) != 0 ? names->insert(name).first->c_str() : nullptr;
    }

private:
    common::Guarded<std::set<std::string>> names_;
};

inline WindowClasses& moduleClasses() {
    static WindowClasses classes;
    return classes;
}
