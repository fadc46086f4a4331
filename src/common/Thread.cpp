#include "common/Thread.h"

#include <process.h>
#include <windows.h>

namespace common {
namespace {

HANDLE asHandle(unsigned long handle) {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

Thread::~Thread() {
    close();
}

bool Thread::start(Entry entry, void* argument) {
    static_assert(sizeof(unsigned long) == sizeof(HANDLE), "a 32-bit process is assumed");
    life_->entry = entry;
    life_->argument = argument;
    auto share = std::make_unique<std::shared_ptr<Life>>(life_);
    handle_ = static_cast<unsigned long>(_beginthreadex(nullptr, 0, run, share.get(), 0, nullptr));
    if (!hasHandle()) return false;
    share.release();  // the thread's own from now on
    return true;
}

unsigned __stdcall Thread::run(void* life) {
    const std::unique_ptr<std::shared_ptr<Life>> share(static_cast<std::shared_ptr<Life>*>(life));
    const unsigned exitCode = (*share)->entry((*share)->argument);
    (*share)->ended = true;
    return exitCode;
}

ThreadState Thread::state() const noexcept {
    DWORD exitCode = 0;
    if (!GetExitCodeThread(asHandle(handle_), &exitCode)) return ThreadState::unreadable;
    return exitCode == STILL_ACTIVE ? ThreadState::running : ThreadState::ended;
}

bool Thread::close() noexcept {
    const unsigned long handle = handle_.exchange(0);
    return handle == 0 || CloseHandle(asHandle(handle)) != 0;
}

unsigned int currentThreadId() noexcept {
    return GetCurrentThreadId();
}

}  // namespace common
