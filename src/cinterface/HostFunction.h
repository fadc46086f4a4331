#pragma once

#include <atomic>
#include <memory>

#include "cinterface/Process.h"
#include "common/Guarded.h"
#include "qorcontrol/Sleep.h"

namespace cinterface {

/// Whether the calling thread is within a function of a host's.
inline bool isInHostFunction() {
    const ThreadState* const state = process().threads.find();
    return state != nullptr && state->callbackDepth != 0;
}

/// A function of the host's and its user pointer, called on any thread while another one replaces
/// it. No lock is held while the host's code runs: that may call the library, this object too.
template <class Function>
class HostFunction {
public:
    /// Does nothing while none is set.
    template <class... Args>
    void operator()(Args... args) {
        const Calling calling(*this);
        if (calling.target() != nullptr)
            calling.target()->function(calling.target()->user, args...);
    }

    bool isSet() { return *target_.lock() != nullptr; }

    /// From the return on the former function is not called any more: a call that runs is awaited,
    /// unless this thread is within a function of a host's. There it could await itself, and two
    /// such threads each other.
    void replace(Function function, void* user) {
        auto target = function == nullptr ? nullptr : std::make_shared<Target>(function, user);
        target_.lock()->swap(target);
        if (target == nullptr || isInHostFunction()) return;
        while (target->running != 0) common::sleepMs(1);
    }

private:
    struct Target {
        Target(Function called, void* passed) : function(called), user(passed) {}

        const Function function;
        void* const user;
        std::atomic<unsigned int> running{0};
    };

    /// One call: counts itself for `replace`, and for its thread.
    class Calling {
    public:
        explicit Calling(HostFunction& owner)
            : thread_(process().threads.get()), target_(owner.begin()) {
            ++thread_.callbackDepth;
        }
        ~Calling() {
            --thread_.callbackDepth;
            if (target_ != nullptr) --target_->running;
        }
        Calling(const Calling&) = delete;
        Calling& operator=(const Calling&) = delete;

        const Target* target() const { return target_.get(); }

    private:
        ThreadState& thread_;
        const std::shared_ptr<Target> target_;
    };

    /// Counted under the lock: who replaces it later sees that it runs.
    std::shared_ptr<Target> begin() {
        const auto target = target_.lock();
        if (*target != nullptr) ++(*target)->running;
        return *target;
    }

    common::Guarded<std::shared_ptr<Target>> target_;
};

}  // namespace cinterface
