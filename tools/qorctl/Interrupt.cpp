#include "Interrupt.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace qorctl::interrupt {
namespace {

constexpr unsigned int sliceMs = 20;
constexpr DWORD closingMs = 4500;

std::atomic<bool> requested{false};

std::mutex wordsMutex;
std::function<int()> lastWords;  // guarded by wordsMutex

[[noreturn]] void endAtOnce() {
    int code = EXIT_FAILURE;
    {
        const std::lock_guard<std::mutex> guard(wordsMutex);
        if (lastWords) code = lastWords();
    }
    // No orderly exit: its other threads may be in the middle of anything.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    std::abort();
}

/// Called by the system on a thread of its own.
BOOL WINAPI onConsoleEvent(DWORD event) {
    const bool isSecond = requested.exchange(true);
    if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) {
        if (isSecond) endAtOnce();
        return TRUE;
    }
    // The console goes, or the session: the system ends the process as soon as this returns, and
    // after 5 s in any case, without a word.
    Sleep(closingMs);
    endAtOnce();
}

}  // namespace

void install() {
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

LastWords::LastWords(std::function<int()> words) {
    const std::lock_guard<std::mutex> guard(wordsMutex);
    lastWords = std::move(words);
}

LastWords::~LastWords() {
    const std::lock_guard<std::mutex> guard(wordsMutex);
    lastWords = nullptr;
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
