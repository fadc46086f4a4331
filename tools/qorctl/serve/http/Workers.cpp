#include "serve/http/Workers.h"

#include <chrono>
#include <exception>
#include <thread>
#include <utility>

namespace qorctl::serve::http {
namespace {

constexpr std::chrono::seconds patience(10);

thread_local bool turnsAway = false;

}  // namespace

bool Workers::isTurningAway() {
    return turnsAway;
}

void Workers::enqueue(std::function<void()> work) {
    if (threads_->passOn(work)) return;
    turnsAway = true;
    work();
    turnsAway = false;
}

bool Workers::Threads::passOn(std::function<void()>& work) {
    const std::lock_guard<std::mutex> guard(mutex_);
    try {
        if (waiting_.size() >= idle_) {
            if (threads_ >= most_) return false;
            std::thread([self = shared_from_this()] { self->run(); }).detach();
            ++threads_;
            ++idle_;  // it is on its way to the work
        }
        waiting_.push_back(std::move(work));
    } catch (const std::exception&) {
        return false;  // no memory, or no more threads
    }
    changed_.notify_one();
    return true;
}

void Workers::Threads::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto hasWork = [&] { return isOver_ || !waiting_.empty(); };
    while (changed_.wait_for(lock, patience, hasWork) && !waiting_.empty()) {
        const std::function<void()> work = std::move(waiting_.front());
        waiting_.pop_front();
        --idle_;
        lock.unlock();
        work();
        lock.lock();
        ++idle_;
    }
    --idle_;
    --threads_;
    changed_.notify_all();
}

void Workers::Threads::end() {
    std::unique_lock<std::mutex> lock(mutex_);
    isOver_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return threads_ == 0; });
}

}  // namespace qorctl::serve::http
