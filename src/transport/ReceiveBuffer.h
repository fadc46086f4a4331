#pragma once

#include <string>

#include "common/Lock.h"
#include "protocol/RecordStream.h"

/// The bytes of a stream that have arrived and are not parsed yet.
class ReceiveBuffer {
public:
    /// While a handler blocks the parsing (a message box, for instance) a peer may send on. Beyond
    /// this it is taken for one gone mad.
    static constexpr std::size_t maxBytes = 2 * protocol::maxRecordBytes;

    /// Past the bound the bytes are dropped, and the stream has overrun.
    void append(const std::string& bytes) {
        const common::LockGuard guard(lock_);
        overrun_ = overrun_ || bytes_.size() + bytes.size() > maxBytes;
        if (!overrun_) bytes_ += bytes;
    }

    /// Leaves the buffer empty.
    std::string takeAll() {
        std::string taken;
        const common::LockGuard guard(lock_);
        taken.swap(bytes_);
        return taken;
    }

    /// Puts bytes back in front of whatever arrived since they were taken.
    void putBack(std::string&& bytes) {
        const common::LockGuard guard(lock_);
        bytes += bytes_;
        bytes_.swap(bytes);
    }

    /// True once bytes were dropped: the place in the stream is lost.
    bool hasOverrun() {
        const common::LockGuard guard(lock_);
        return overrun_;
    }

    void clear() {
        const common::LockGuard guard(lock_);
        bytes_.clear();
        overrun_ = false;
    }

private:
    common::Lock lock_;
    std::string bytes_;
    bool overrun_ = false;
};
