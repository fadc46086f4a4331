#include "WindowTable.h"

#include <algorithm>
#include <mutex>

namespace desktop {
namespace {

using Reading = std::shared_lock<std::shared_mutex>;
using Writing = std::unique_lock<std::shared_mutex>;

std::uintptr_t numberOf(HWND handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

}  // namespace

bool WindowTable::addClass(const std::string& name, WNDPROC procedure) {
    const Writing guard(mutex_);
    return classes_.emplace(name, procedure).second;
}

bool WindowTable::removeClass(const std::string& name) {
    const Writing guard(mutex_);
    const auto isOf = [&](const auto& entry) { return entry.second->className == name; };
    if (std::any_of(windows_.begin(), windows_.end(), isOf)) return false;
    return classes_.erase(name) != 0;
}

WNDPROC WindowTable::procedureOf(const std::string& className) const {
    const Reading guard(mutex_);
    const auto found = classes_.find(className);
    return found != classes_.end() ? found->second : nullptr;
}

HWND WindowTable::add(const std::shared_ptr<Window>& window) {
    const Writing guard(mutex_);
    last_ += 2;
    windows_.emplace(last_, window);
    return reinterpret_cast<HWND>(last_);
}

std::shared_ptr<Window> WindowTable::find(HWND handle) const {
    const Reading guard(mutex_);
    const auto found = windows_.find(numberOf(handle));
    return found != windows_.end() ? found->second : nullptr;
}

HWND WindowTable::newestTopLevel(const std::string& title) const {
    const Reading guard(mutex_);
    const auto fits = [&](const auto& entry) {
        return entry.second->isTopLevel && entry.second->title == title;
    };
    const auto found = std::find_if(windows_.rbegin(), windows_.rend(), fits);
    return found != windows_.rend() ? reinterpret_cast<HWND>(found->first) : nullptr;
}

void WindowTable::remove(HWND handle) {
    const Writing guard(mutex_);
    windows_.erase(numberOf(handle));
}

void WindowTable::removeAllOf(DWORD thread) {
    const Writing guard(mutex_);
    for (auto entry = windows_.begin(); entry != windows_.end();)
        entry = entry->second->thread == thread ? windows_.erase(entry) : std::next(entry);
}

WindowTable& windows() {
    static auto* const table = new WindowTable;  // also for threads that outlive the others
    return *table;
}

}  // namespace desktop
