#pragma once

#include <string>

#include "common/Lock.h"

/// The bytes of a stream that have arrived and are not parsed yet.
class ReceiveBuffer {
public:
    void append(const std::string& bytes) {
        const LockGuard guard(lock_);
        bytes_ += bytes;
    }

    /// Leaves the buffer empty.
    std::string takeAll() {
        std::string taken;
        const LockGuard guard(lock_);
        taken.swap(bytes_);
        return taken;
    }

    /// Puts bytes back in front of whatever arrived since they were taken.
    void putBack(std::string&& bytes) {
        const LockGuard guard(lock_);
        bytes += bytes_;
        bytes_.swap(bytes);
    }

    void clear() {
        const LockGuard guard(lock_);
        bytes_.clear();
    }

private:
    Lock lock_;
    std::string bytes_;
};
