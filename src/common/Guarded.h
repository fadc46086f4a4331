#pragma once

#include "qorcontrol/Lock.h"

namespace common {

/// A value that can be reached only while its lock is held:
///
///     auto state = guarded.lock();
///     state->field = 1;
///
/// Copy out what is needed and let the access go before calling anything else.
template <class T>
class Guarded {
public:
    class Access {
    public:
        Access(Lock& lock, T& value) : guard_(lock), value_(value) {}
        T* operator->() const { return &value_; }
        T& operator*() const { return value_; }

    private:
        LockGuard guard_;
        T& value_;
    };

    Access lock() { return Access(lock_, value_); }

private:
    Lock lock_;
    T value_;
};

}  // namespace common
