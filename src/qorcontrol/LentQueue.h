#pragma once

#include "qorcontrol/ThreadSafeQueue.h"

namespace qorcontrol {

/// A queue that the library may be filling: it is freed by `takeBack` alone. Without that it stays
/// for as long as the process lives, for nothing tells when the library is done with it; so it is
/// left to the end of the process also when an exception ends its user.
template <class Item>
class LentQueue {
public:
    explicit LentQueue(unsigned int slots) : queue_(new ThreadSafeQueue<Item>(slots)) {}
    LentQueue(const LentQueue&) = delete;
    LentQueue& operator=(const LentQueue&) = delete;

    /// Null once it was taken back.
    ThreadSafeQueue<Item>* get() const noexcept { return queue_; }

    /// To be called when the library has let go of it.
    void takeBack() noexcept {
        delete queue_;
        queue_ = nullptr;
    }

private:
    ThreadSafeQueue<Item>* queue_;
};

}  // namespace qorcontrol
