#pragma once

#include <windows.h>

namespace soak {

/// Makes no more than one handle of the system, at its first quarrel.
class Lock {
public:
    Lock() { InitializeCriticalSection(&section_); }
    ~Lock() { DeleteCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void enter() { EnterCriticalSection(&section_); }
    void leave() { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
};

class Inside {
public:
    explicit Inside(Lock& lock) : lock_(lock) { lock_.enter(); }
    ~Inside() { lock_.leave(); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    Lock& lock_;
};

/// A handle of the system, which goes with this.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() { CloseHandle(handle_); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

}  // namespace soak
