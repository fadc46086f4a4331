#include <windows.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

using std::chrono::steady_clock;

std::chrono::nanoseconds sinceBoot() {
    return steady_clock::now().time_since_epoch();
}

}  // namespace

DWORD GetTickCount() noexcept {
    return static_cast<DWORD>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceBoot()).count());
}

void Sleep(DWORD ms) noexcept {
    if (ms == 0)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void GetLocalTime(SYSTEMTIME* now) noexcept {
    const std::time_t seconds = std::time(nullptr);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    *now = {static_cast<WORD>(parts.tm_year + 1900), static_cast<WORD>(parts.tm_mon + 1),
            static_cast<WORD>(parts.tm_mday),        static_cast<WORD>(parts.tm_hour),
            static_cast<WORD>(parts.tm_min),         static_cast<WORD>(parts.tm_sec)};
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* counter) noexcept {
    counter->QuadPart = sinceBoot().count();
    return TRUE;
}
