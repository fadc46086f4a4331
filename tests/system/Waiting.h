#pragma once

#include <windows.h>

/// Whether `holds` becomes true within `timeoutMs`; looked at every few milliseconds.
template <class Condition>
bool eventually(unsigned timeoutMs, Condition holds) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    while (!holds()) {
        if (GetTickCount64() > end) return false;
        Sleep(5);
    }
    return true;
}

/// How long an action took.
template <class Action>
unsigned elapsedMsOf(Action action) {
    const ULONGLONG start = GetTickCount64();
    action();
    return static_cast<unsigned>(GetTickCount64() - start);
}
