#include "Kernel.h"

#include <process.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <thread>

#include "Faults.h"

using torture::Call;
using torture::mustFail;
using torture::Watched;

namespace {

constexpr DWORD notEnoughMemory = 8;
constexpr DWORD waitFailed = 0xFFFFFFFFu;

std::atomic<int> threads{0};
std::atomic<int> threadHandles{0};
std::atomic<int> references{0};

/// True with the system's error set.
bool fails(Call call) {
    if (!mustFail(call)) return false;
    SetLastError(notEnoughMemory);
    return true;
}

using Entry = unsigned (*)(void*);

/// Not from operator new, which would be the library's allocation.
struct Start {
    Entry entry;
    void* argument;
};

/// Of a pause. Nothing hurries threads that are none of the library's. Who looks again and again
/// for something to end has nearly as much patience as in real time, whatever else the machine
/// does.
std::chrono::microseconds realTimeOf(DWORD ms) {
    using std::chrono::milliseconds;
    constexpr DWORD pollMs = 50;
    thread_local int polls = 0;
    polls = ms == pollMs ? polls + 1 : 0;
    if (!torture::isWatched()) return milliseconds(ms);
    if (ms == pollMs) return milliseconds(std::min(2 * polls, 50));
    return std::chrono::microseconds(1000 * ms / torture::haste);
}

class Counted {
public:
    Counted() { ++threads; }
    ~Counted() { --threads; }
};

unsigned runWatched(void* argument) {
    auto* const given = static_cast<Start*>(argument);
    const Start start = *given;
    std::free(given);
    const Counted counted;
    const Watched watched;
    return start.entry(start.argument);
}

}  // namespace

int torture::threadsOfLibrary() noexcept {
    return threads;
}

int torture::openThreadHandles() noexcept {
    return threadHandles;
}

int torture::moduleReferences() noexcept {
    return references;
}

// The linker gives the library these in place of its stand-in kernel's (--wrap): the names are
// those of the compiler.
extern "C" {

HANDLE __real__Z12CreateEventAPviiPKc(void*, BOOL, BOOL, const char*);
HANDLE __wrap__Z12CreateEventAPviiPKc(void* security, BOOL manual, BOOL set, const char* name) {
    if (fails(Call::createEvent)) return nullptr;
    const Watched notInThere(false);
    return __real__Z12CreateEventAPviiPKc(security, manual, set, name);
}

BOOL __real__Z8SetEventPv(HANDLE);
BOOL __wrap__Z8SetEventPv(HANDLE event) {
    return fails(Call::setEvent) ? FALSE : __real__Z8SetEventPv(event);
}

BOOL __real__Z10ResetEventPv(HANDLE);
BOOL __wrap__Z10ResetEventPv(HANDLE event) {
    return fails(Call::resetEvent) ? FALSE : __real__Z10ResetEventPv(event);
}

DWORD __real__Z19WaitForSingleObjectPvj(HANDLE, DWORD);
DWORD __wrap__Z19WaitForSingleObjectPvj(HANDLE event, DWORD timeoutMs) {
    if (fails(Call::wait)) return waitFailed;
    if (timeoutMs != INFINITE && timeoutMs != 0)
        timeoutMs = std::max<DWORD>(timeoutMs / torture::haste, 1);
    return __real__Z19WaitForSingleObjectPvj(event, timeoutMs);
}

std::uintptr_t __real__Z14_beginthreadexPvjPFjS_ES_jPj(void*, unsigned, Entry, void*, unsigned,
                                                       unsigned*);
std::uintptr_t __wrap__Z14_beginthreadexPvjPFjS_ES_jPj(void* security, unsigned stackBytes,
                                                       Entry entry, void* argument, unsigned flags,
                                                       unsigned* id) {
    if (fails(Call::beginThread)) return 0;
    const Watched notInThere(false);
    auto* const start = static_cast<Start*>(std::malloc(sizeof(Start)));
    *start = {entry, argument};
    ++threadHandles;
    return __real__Z14_beginthreadexPvjPFjS_ES_jPj(security, stackBytes, runWatched, start, flags,
                                                   id);
}

BOOL __real__Z17GetExitCodeThreadPvPj(HANDLE, DWORD*);
BOOL __wrap__Z17GetExitCodeThreadPvPj(HANDLE thread, DWORD* exitCode) {
    return fails(Call::exitCode) ? FALSE : __real__Z17GetExitCodeThreadPvPj(thread, exitCode);
}

/// The handle is closed all the same: what the system keeps then is not the library's leak.
BOOL __real__Z11CloseHandlePv(HANDLE);
BOOL __wrap__Z11CloseHandlePv(HANDLE handle) {
    const bool failing = fails(Call::closeHandle);
    if (reinterpret_cast<std::uintptr_t>(handle) % 2 != 0) --threadHandles;
    const BOOL closed = __real__Z11CloseHandlePv(handle);
    return failing ? FALSE : closed;
}

BOOL __real__Z18GetModuleHandleExAjPKcPPv(DWORD, const char*, HMODULE*);
BOOL __wrap__Z18GetModuleHandleExAjPKcPPv(DWORD flags, const char* address, HMODULE* module) {
    *module = nullptr;
    if (fails(Call::moduleReference)) return FALSE;
    ++references;
    return __real__Z18GetModuleHandleExAjPKcPPv(flags, address, module);
}

BOOL __real__Z11FreeLibraryPv(HMODULE);
BOOL __wrap__Z11FreeLibraryPv(HMODULE module) {
    --references;
    return __real__Z11FreeLibraryPv(module);
}

[[noreturn]] void __real__Z24FreeLibraryAndExitThreadPvj(HMODULE, DWORD);
[[noreturn]] void __wrap__Z24FreeLibraryAndExitThreadPvj(HMODULE module, DWORD exitCode) {
    --references;
    __real__Z24FreeLibraryAndExitThreadPvj(module, exitCode);
}

/// The error is another one than that of a thread which has ended.
HANDLE __real__Z10OpenThreadjij(DWORD, BOOL, DWORD);
HANDLE __wrap__Z10OpenThreadjij(DWORD access, BOOL inherits, DWORD id) {
    return fails(Call::openThread) ? nullptr : __real__Z10OpenThreadjij(access, inherits, id);
}

DWORD __wrap__Z12GetTickCountv() {
    using namespace std::chrono;
    const auto sinceBoot = steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(duration_cast<microseconds>(sinceBoot).count() * torture::haste /
                              1000);
}

void __wrap__Z5Sleepj(DWORD ms) {
    std::this_thread::sleep_for(realTimeOf(ms));
}
}
