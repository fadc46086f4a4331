#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>

#include "ThreadQueue.h"

namespace desktop {

struct Window {
    WNDPROC procedure = nullptr;
    std::string className;
    std::string title;
    bool isTopLevel = false;
    DWORD thread = 0;
    std::shared_ptr<ThreadQueue> queue;
    LONG_PTR userData = 0;  // without a lock: whose window it is not has no business with it
};

/// The windows and window classes of all threads. A handle is never given out twice. Who only looks
/// shares the lock, and so is not ordered with others who look.
class WindowTable {
public:
    /// @name Classes. False: there is one, there is none, there are windows of it.
    /// @{
    bool addClass(const std::string& name, WNDPROC procedure);
    bool removeClass(const std::string& name);
    WNDPROC procedureOf(const std::string& className) const;
    /// @}

    HWND add(const std::shared_ptr<Window>& window);
    /// Null if there is none.
    std::shared_ptr<Window> find(HWND handle) const;
    HWND newestTopLevel(const std::string& title) const;
    void remove(HWND handle);
    void removeAllOf(DWORD thread);

private:
    mutable std::shared_mutex mutex_;
    std::map<std::string, WNDPROC> classes_;
    std::map<std::uintptr_t, std::shared_ptr<Window>> windows_;
    std::uintptr_t last_ = 0x10000;
};

WindowTable& windows();

}  // namespace desktop
