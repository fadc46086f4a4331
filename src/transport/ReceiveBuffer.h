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

    /// Behind so many bytes of whole records no record is hurried: these are to be handled first.
    static constexpr std::size_t maxWaitingBytes = 1u << 20;

    /// Past the bound the bytes are dropped, and the stream has overrun. Returns how many bytes are
    /// still to come, and worth being taken at once, of the record that the last of these belong
    /// to; 0: that is not known.
    std::size_t append(const std::string& bytes) {
        const common::LockGuard guard(lock_);
        overrun_ = overrun_ || bytes_.size() + bytes.size() > maxBytes;
        if (overrun_) return 0;
        makeRoomFor(bytes_.size() + bytes.size());
        bytes_ += bytes;
        findEnd();
        const bool isTimeToParse = begin_ > maxWaitingBytes;
        return isTimeToParse ? 0 : end_ - std::min(end_, bytes_.size());
    }

    /// Leaves the buffer empty. Until something is put back, be it nothing, it is not known where
    /// in what arrives records begin.
    std::string takeAll() {
        std::string taken;
        const common::LockGuard guard(lock_);
        taken.swap(bytes_);
        begin_ = end_ = 0;
        isBeginKnown_ = isBeginKnown_ && taken.empty();
        return taken;
    }

    /// Puts bytes back, the first of which begin a record, in front of whatever arrived since they
    /// were taken. If nothing did, nothing is copied: the beginning of a long record comes here
    /// with every piece of it.
    void putBack(std::string&& bytes) {
        const common::LockGuard guard(lock_);
        bytes += bytes_;
        bytes_.swap(bytes);
        begin_ = 0;
        isBeginKnown_ = true;
        findEnd();
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
        begin_ = end_ = 0;
        isBeginKnown_ = true;
        overrun_ = false;
    }

private:
    /// Inside of a record whose end is known there are few steps, for room that nobody has touched
    /// is expensive: eight times as much, up to that end. Otherwise it doubles, as a string does by
    /// itself, but never beyond the bound: 256 MiB are more than the process may have in one piece.
    void makeRoomFor(std::size_t size) {
        const std::size_t present = bytes_.capacity();
        if (size <= present) return;
        const bool isInside = size <= end_;
        std::string roomier;
        roomier.reserve(std::min(std::max(size, (isInside ? 8 : 2) * present),
                                 std::min(isInside ? end_ : maxBytes, maxBytes)));
        roomier += bytes_;
        bytes_.swap(roomier);
    }

    /// Of the last record that has begun.
    void findEnd() {
        if (!isBeginKnown_) return;
        protocol::FramedRecord last = protocol::recordAt(bytes_, begin_);
        for (; last.state == protocol::StreamState::complete;
             last = protocol::recordAt(bytes_, begin_))
            begin_ += last.length;
        end_ = last.length != 0 ? begin_ + last.length : 0;
    }

    common::Lock lock_;
    std::string bytes_;
    // The last record that has begun, in `bytes_`. Its end is 0 while nobody knows it.
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool isBeginKnown_ = true;
    bool overrun_ = false;
};
