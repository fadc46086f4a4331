#pragma once

#include <map>
#include <utility>

#include "common/Thread.h"
#include "qorcontrol/Lock.h"

namespace common {

/// One place for a T per thread, for as long as the table lives. The place of a thread that has
/// ended, with what is in it, passes to a thread that has none yet, so that many short threads need
/// no more places than few. What is in a place is handed in and out under the table's lock, so that
/// the next thread finds all that the one before it did.
template <class T>
class PerThread {
public:
    PerThread() = default;
    PerThread(const PerThread&) = delete;
    PerThread& operator=(const PerThread&) = delete;

    /// A copy of what is in the calling thread's place: of T() if nobody has put anything there.
    T get() {
        const LockGuard guard(lock_);
        return ofThisThread();
    }

    /// Puts something else there and gives what was there before.
    T exchange(T content) {
        const LockGuard guard(lock_);
        std::swap(ofThisThread(), content);
        return content;
    }

private:
    using Places = std::map<unsigned int, T>;

    T& ofThisThread() {
        const unsigned int id = currentThreadId();
        const auto own = places_.find(id);
        if (own != places_.end()) return own->second;
        const auto left = findLeft();
        if (left == places_.end()) return places_[id];
        auto place = places_.extract(left);
        place.key() = id;
        return places_.insert(std::move(place)).position->second;
    }

    /// A place whose thread has ended. Looks at two places each time, the next ones in turn: each
    /// look costs calls of the kernel, and two for each new place are enough to keep pace.
    typename Places::iterator findLeft() {
        for (int look = 0; look < 2 && !places_.empty(); ++look) {
            auto place = places_.upper_bound(lastLook_);
            if (place == places_.end()) place = places_.begin();
            lastLook_ = place->first;
            if (hasThreadEnded(lastLook_)) return place;
        }
        return places_.end();
    }

    Lock lock_;
    Places places_;
    unsigned int lastLook_ = 0;
};

}  // namespace common
