#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "qorcontrol/Event.h"
#include "qorcontrol/Lock.h"
#include "qorcontrol/Sleep.h"

/// A bounded ring of copies of T with a wake-up event, for any number of threads.
///
/// A producer is never blocked by a slow consumer: `push` into a full ring waits once for 1 ms
/// and then overwrites the oldest unread item at the read position. Such an overflow costs more
/// than that one item: the next `pop` returns the new item, and the older ones that were unread
/// behind it are given up with it (the ring counts as empty once the read position has caught up
/// with the write position).
///
/// T must be default-constructible and copy-assignable. A slot keeps its copy until it is written
/// again, so a shared payload in it lives that long. The host that passes a queue to a streaming
/// operation owns it and must build it with the same compiler and shared run-time libraries as
/// the library.
template <class T>
class ThreadSafeQueue {
public:
    /// `capacity` slots; 0 is taken as 1.
    explicit ThreadSafeQueue(unsigned int capacity) : slots_(capacity == 0 ? 1 : capacity) {}
    virtual ~ThreadSafeQueue() = default;
    ThreadSafeQueue(const ThreadSafeQueue&) = delete;
    ThreadSafeQueue& operator=(const ThreadSafeQueue&) = delete;

    /// Never fails and blocks no longer than about 1 ms.
    void push(const T& item) {
        lock_.enter();
        if (isFull()) {
            lock_.leave();
            common::sleepMs(1);
            lock_.enter();
        }
        {
            const Leave leave(lock_);
            if (writeIndex_ == readIndex_) overflowed_ = !empty_;
            slots_[writeIndex_] = item;
            empty_ = false;
            writeIndex_ = after(writeIndex_);
        }
        event_.signal();
    }

    /// Takes the oldest item; on an empty ring waits once, at most `timeoutMs` (0xFFFFFFFF,
    /// `common::Event::infinite`: no limit). A signal left over from an item that was taken without
    /// waiting ends the wait early, so false does not always mean that the whole time has passed.
    bool pop(T& item, unsigned int timeoutMs) {
        lock_.enter();
        if (empty_ && event_.exists()) {
            lock_.leave();
            event_.wait(timeoutMs);
            lock_.enter();
        }
        const Leave leave(lock_);
        return take(item);
    }

    /// Takes the oldest item, if there is one, without a call of the system: the signal of its push
    /// stays, and ends a later wait early.
    bool takeIfThere(T& item) {
        const common::LockGuard guard(lock_);
        return take(item);
    }

    bool isEmpty() {
        const common::LockGuard guard(lock_);
        return empty_;
    }

    /// Drops all unread items and a left-over signal. The slots keep their copies.
    void clear() {
        {
            const common::LockGuard guard(lock_);
            readIndex_ = writeIndex_ = 0;
            overflowed_ = false;
            empty_ = true;
        }
        event_.reset();
    }

    /// True when the last push into equal positions overwrote an unread item.
    bool overflowed() {
        const common::LockGuard guard(lock_);
        return overflowed_;
    }

    /// The event that each push signals, for a consumer that waits on other things as well.
    const common::Event& pushed() const { return event_; }

private:
    /// Leaves a lock that was entered by hand, also when copying an item throws.
    class Leave {
    public:
        explicit Leave(common::Lock& lock) : lock_(lock) {}
        ~Leave() { lock_.leave(); }
        Leave(const Leave&) = delete;
        Leave& operator=(const Leave&) = delete;

    private:
        common::Lock& lock_;
    };

    bool take(T& item) {
        if (empty_) return false;
        item = slots_[readIndex_];
        readIndex_ = after(readIndex_);
        if (readIndex_ == writeIndex_) empty_ = true;
        return true;
    }

    bool isFull() const { return writeIndex_ == readIndex_ && !empty_; }
    std::uint32_t after(std::uint32_t index) const {
        return index + 1 == slots_.size() ? 0 : index + 1;
    }

    common::Lock lock_;
    common::Event event_;
    std::vector<T> slots_;
    std::uint32_t readIndex_ = 0;
    std::uint32_t writeIndex_ = 0;
    bool overflowed_ = false;
    bool empty_ = true;
};
