#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "serve/http/Library.h"

namespace qorctl::serve::http {

/// A thread for each connection, up to a limit; beyond it connections are turned away. A thread
/// that is not needed any more ends after some seconds.
class Workers final : public httplib::TaskQueue {
public:
    /// The threads, and the work that waits for one.
    class Threads;

    /// @param threads  go on when this object has ended: the library makes a new one when it has
    ///                 to listen anew.
    explicit Workers(std::shared_ptr<Threads> threads) : threads_(std::move(threads)) {}

    void enqueue(std::function<void()> work) override;
    void shutdown() override {}

    /// Whether the calling thread has to turn its connection away, at once.
    static bool isTurningAway();

private:
    const std::shared_ptr<Threads> threads_;
};

class Workers::Threads : public std::enable_shared_from_this<Threads> {
public:
    explicit Threads(std::size_t most) : most_(most) {}
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    /// False: there is no thread for it.
    bool passOn(std::function<void()>& work);
    /// Waits until all connections have ended.
    void end();

private:
    void run();

    const std::size_t most_;
    std::mutex mutex_;
    std::condition_variable changed_;
    // All guarded by mutex_.
    std::deque<std::function<void()>> waiting_;
    std::size_t threads_ = 0;
    std::size_t idle_ = 0;
    bool isOver_ = false;
};

}  // namespace qorctl::serve::http
