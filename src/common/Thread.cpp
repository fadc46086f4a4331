#include "common/Thread.h"

#include <process.h>
#include <windows.h>

#include <type_traits>

namespace common {
namespace {

HANDLE asHandle(unsigned long handle) {
    return reinterpret_cast<HANDLE>(handle);
}

struct FreeModule {
    void operator()(HMODULE module) const { FreeLibrary(module); }
};
/// A reference on a module: the system does not unload it as long as there is one.
using ModuleReference = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

/// On the module that holds this code: the library, or the program that it is linked into, which
/// is never unloaded anyway. Null on failure; the last-error code tells why.
ModuleReference referToOwnModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const char*>(&referToOwnModule), &module);
    return ModuleReference(module);
}

}  // namespace

struct Thread::Luggage {
    std::shared_ptr<Life> life;
    ModuleReference code;  // the thread's code
};

Thread::~Thread() {
    close();
}

bool Thread::start(Entry entry, void* argument) {
    static_assert(sizeof(unsigned long) == sizeof(HANDLE), "a 32-bit process is assumed");
    life_->entry = entry;
    life_->argument = argument;
    // Taken here and not by the thread itself: the starter is in the module, so it is still there.
    auto luggage = std::make_unique<Luggage>(Luggage{life_, referToOwnModule()});
    if (!luggage->code) return false;
    handle_ =
        static_cast<unsigned long>(_beginthreadex(nullptr, 0, run, luggage.get(), 0, nullptr));
    if (hasHandle()) {
        static_cast<void>(luggage.release());  // the thread's own from now on
        return true;
    }
    const DWORD error = GetLastError();
    luggage.reset();  // which may change the code
    SetLastError(error);
    return false;
}

// Whoever started the thread may long have let it go and unloaded the library, so this reference
// may be the last one. The code to return to is gone then: the system has to give it back and end
// the thread in one call. What the run-time library keeps of a thread it frees at the end of any
// thread, so leaving past its own way out loses nothing. (Newer ones do all this by themselves.)
unsigned __stdcall Thread::run(void* luggage) {
    HMODULE code = nullptr;
    unsigned exitCode = 0;
    {
        const std::unique_ptr<Luggage> own(static_cast<Luggage*>(luggage));
        exitCode = own->life->entry(own->life->argument);
        own->life->ended = true;
        code = own->code.release();
    }
    FreeLibraryAndExitThread(code, exitCode);
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

bool hasThreadEnded(unsigned int id) noexcept {
    HANDLE const thread = OpenThread(THREAD_QUERY_LIMITED_INFORMATION, FALSE, id);
    if (thread == nullptr) return GetLastError() == ERROR_INVALID_PARAMETER;
    DWORD exitCode = STILL_ACTIVE;
    // The id may have passed to a thread of another process.
    const bool hasEnded =
        GetProcessIdOfThread(thread) != GetCurrentProcessId() ||
        (GetExitCodeThread(thread, &exitCode) != FALSE && exitCode != STILL_ACTIVE);
    CloseHandle(thread);
    return hasEnded;
}

}  // namespace common
