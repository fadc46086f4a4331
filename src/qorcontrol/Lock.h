#pragma once

#include "qorcontrol/Export.h"

namespace common {

/// A recursive lock: a critical section paired with a flag that tells whether it is initialised.
///
/// Every acquisition first initialises the section if the flag is clear, and destruction deletes
/// it only if the flag is set. The constructor already initialises it, so that two threads never
/// race for the first use; `release` gives the section back early, and the next `enter` makes a
/// new one.
///
/// The object has the size of the process's critical section without naming a system header, so
/// that it can be a member of exported templates. It is neither copied nor moved.
class QOR_API Lock {
public:
    Lock() noexcept;
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void enter() noexcept;
    void leave() noexcept;

    /// Deletes the critical section. No thread may hold or await the lock.
    void release() noexcept;

private:
    void initialise() noexcept;

    static constexpr unsigned sectionBytes = sizeof(void*) == 4 ? 24 : 40;

    alignas(8) unsigned char section_[sectionBytes];
    bool initialised_ = false;
};

/// Holds a lock to the end of the block.
class LockGuard {
public:
    explicit LockGuard(Lock& lock) noexcept : lock_(lock) { lock_.enter(); }
    ~LockGuard() { lock_.leave(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    Lock& lock_;
};

}  // namespace common
