#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <future>

#include "common/Pump.h"

/// Takes copy-data messages, as the library's waits do, until `isDone`; false after `withinMs`.
inline bool pumpUntil(const std::function<bool()>& isDone, DWORD withinMs = 10000) {
    const DWORD start = GetTickCount();
    do {
        common::pumpCopyData();
        if (isDone()) return true;
        MsgWaitForMultipleObjectsEx(0, nullptr, 2, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    } while (GetTickCount() - start < withinMs);
    return false;
}

/// Has `work` done on another thread and takes copy-data messages until it is; its result.
template <class Work>
auto pumpDuring(Work work) {
    auto result = std::async(std::launch::async, std::move(work));
    pumpUntil([&] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
              60000);
    return result.get();
}

/// Milliseconds since its making.
class Elapsed {
public:
    DWORD ms() const {
        const auto span = std::chrono::steady_clock::now() - start_;
        return static_cast<DWORD>(
            std::chrono::duration_cast<std::chrono::milliseconds>(span).count());
    }

private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};
