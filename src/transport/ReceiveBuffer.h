#pragma once

#include <algorithm>
#include <string>

#include "protocol/RecordStream.h"
#include "qorcontrol/Lock.h"

/// The bytes of a stream that have arrived and are not parsed yet.
class ReceiveBuffer {
public:
    /// While a handler blocks the parsing (a message box, for instance) a peer may send on, behind
    /// the longest record even. Beyond this it is taken for one gone mad.
    static constexpr std::size_t maxBytes = protocol::maxRecordBytes + (32u << 20);

    /// Past the bound the bytes are dropped, and the stream has overrun.
    void append(const std::string& bytes) {
        const common::LockGuard guard(lock_);
        overrun_ = overrun_ || bytes_.size() + bytes.size() > maxBytes;
        if (overrun_) return;
        makeRoomFor(bytes_.size() + bytes.size());
        bytes_ += bytes;
    }

    /// Leaves the buffer empty.
    std::string takeAll() {
        std::string taken;
        const common::LockGuard guard(lock_);
        taken.swap(bytes_);
        return taken;
    }

    /// Puts bytes back in front of whatever arrived since they were taken. If nothing did, nothing
    /// is copied: the beginning of a long record comes here with every piece of it.
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

    /// Gives the memory back, too.
    void clear() {
        const common::LockGuard guard(lock_);
        std::string().swap(bytes_);
        overrun_ = false;
    }

private:
    /// Doubles the room, as a string does by itself, but never beyond the bound: 256 MiB are more
    /// than the process may have in one piece.
    void makeRoomFor(std::size_t size) {
        if (size <= bytes_.capacity()) return;
        std::string roomier;
        roomier.reserve(std::min(std::max(size, 2 * bytes_.capacity()), maxBytes));
        roomier += bytes_;
        bytes_.swap(roomier);
    }

    common::Lock lock_;
    std::string bytes_;
    bool overrun_ = false;
};
