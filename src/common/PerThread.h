#pragma once

#include <map>
#include <utility>

#include "common/Lock.h"
#include "common/Thread.h"

namespace common {

/// One place for a T per thread, for as long as the table lives. The place of a thread that has
/// ended, with what is in it, passes to a thread that has none yet, so that many short threads need
/// no more places than few. A place is used by its own thread alone.
template <class T>
class PerThread {
public:
    PerThread() = default;
    PerThread(const PerThread&) = delete;
    PerThread& operator=(const PerThread&) = delete;

    /// The calling thread's place; it stays where it is.
    T& ofThisThread() {
        const unsigned int id = currentThreadId();
        const LockGuard guard(lock_);
        const auto own = places_.find(id);
        if (own != places_.end()) return own->second;
        const auto left = findLeft();
        if (left == places_.end()) return places_[id];
        auto place = places_.extract(left);
        place.key() = id;
        return places_.insert(std::move(place)).position->second;
    }

private:
    using Places = std::map<unsigned int, T>;

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
