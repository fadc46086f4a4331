#include "Interrupt.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

namespace qorctl::interrupt {
namespace {

constexpr unsigned int sliceMs = 20;

std::atomic<bool> requested{false};

/// Called by the system on a thread of its own. FALSE leaves the event to the system, which ends
/// the process.
BOOL WINAPI onConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
    return requested.exchange(true) ? FALSE : TRUE;
}

}  // namespace

void install() {
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

bool isRequested() {
    return requested;
}

bool sleepMs(unsigned int ms) {
    for (unsigned int slept = 0; slept < ms && !requested; slept += sliceMs)
        Sleep(std::min(sliceMs, ms - slept));
    return !requested;
}

}  // namespace qorctl::interrupt
