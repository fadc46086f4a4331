#pragma once

#include <cstdint>

#include "common/Guarded.h"
#include "common/SlicedWait.h"
#include "qorcontrol/Event.h"
#include "qorcontrol/Sleep.h"

namespace common {

/// A value under a lock whose changes any number of threads can await. Who changes it pays for a
/// kernel call only if somebody waits.
template <class Value>
class Awaited {
public:
    template <class Change>
    void change(Change&& change) {
        bool isAwaited = false;
        {
            const auto state = state_.lock();
            change(state->value);
            isAwaited = state->waiting != 0;
        }
        if (isAwaited) changed_.signal();
    }

    /// Lets `take` look at the value, at once and after each change, until it returns true or the
    /// time has passed; whether it did.
    template <class Take>
    bool await(std::uint32_t timeoutMs, Take&& take) {
        common::SlicedWait wait(timeoutMs);
        if (look(take, 0)) return true;
        do {
            if (changed_.exists())
                changed_.wait(wait.sliceMs());
            else
                common::sleepMs(1);
            if (look(take, 1)) return true;
        } while (wait.goesOn());
        leave();
        return false;
    }

private:
    struct State {
        Value value;
        unsigned int waiting = 0;
    };

    /// `own`: 1 if the caller is counted among those who wait, as it is after a look in vain.
    template <class Take>
    bool look(Take& take, unsigned int own) {
        bool isAwaited = false;
        {
            const auto state = state_.lock();
            if (!take(state->value)) {
                state->waiting += 1 - own;
                return false;
            }
            state->waiting -= own;
            isAwaited = state->waiting != 0;
        }
        // There may be something left: one signal wakes one thread.
        if (isAwaited) changed_.signal();
        return true;
    }

    void leave() { --state_.lock()->waiting; }

    common::Guarded<State> state_;
    common::Event changed_;
};

}  // namespace common
