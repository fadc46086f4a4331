#pragma once

#include <memory>
#include <vector>

#include "QorControlFacade.h"

namespace qorctl {

/// A queue that the library's agent fills. It must outlive the stop of its stream until the agent
/// has seen that stop, so whoever stops the stream says whether it has; where it has not, the
/// queue lives as long as the process.
template <class Item>
class StreamQueue {
public:
    using Batch = std::vector<Item>;
    using Queue = ThreadSafeQueue<Batch>;

    // The agent fills it about once a millisecond while values flow.
    static constexpr unsigned int slots = 64;

    StreamQueue() : queue_(std::make_unique<Queue>(slots)) {}
    ~StreamQueue() {
        if (!isRetired_) static_cast<void>(queue_.release());  // leaked, see above
    }
    StreamQueue(const StreamQueue&) = delete;
    StreamQueue& operator=(const StreamQueue&) = delete;

    Queue* get() { return queue_.get(); }
    bool pop(Batch& batch, unsigned int timeoutMs) { return queue_->pop(batch, timeoutMs); }

    /// To be called behind the stop: true if the agent has answered since and so lets go of the
    /// queue.
    bool retire(QorControlFacade& facade, unsigned int timeoutMs) {
        isRetired_ = facade.pingQor(timeoutMs);
        return isRetired_;
    }

private:
    std::unique_ptr<Queue> queue_;
    bool isRetired_ = false;
};

}  // namespace qorctl
