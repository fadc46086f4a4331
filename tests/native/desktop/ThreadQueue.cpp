#include "ThreadQueue.h"

#include <algorithm>

#include "WindowTable.h"

namespace desktop {
namespace {

constexpr std::int64_t hangsAfterMs = 5000;

std::int64_t nowMs() {
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<ThreadQueue::Ms>(sinceBoot).count();
}

/// A thread's queue, which ends with the thread.
struct OwnQueue {
    const std::shared_ptr<ThreadQueue> queue = std::make_shared<ThreadQueue>();

    OwnQueue() { queue->noteLook(); }
    ~OwnQueue() {
        windows().removeAllOf(GetCurrentThreadId());
        queue->end();
    }
    OwnQueue(const OwnQueue&) = delete;
    OwnQueue& operator=(const OwnQueue&) = delete;
};

}  // namespace

const std::shared_ptr<ThreadQueue>& ThreadQueue::own() {
    thread_local const OwnQueue own;
    return own.queue;
}

bool ThreadQueue::post(const MSG& message) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (ended_) return false;
    posted_.push_back(message);
    changed_.notify_one();
    return true;
}

bool ThreadQueue::send(const std::shared_ptr<Sent>& message) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (ended_) return false;
    sent_.push_back(message);
    changed_.notify_one();
    return true;
}

void ThreadQueue::finish(Sent& message, Sent::State state, LRESULT result) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (message.state != Sent::waiting) return;
    message.state = state;
    message.result = result;
    changed_.notify_one();
}

bool ThreadQueue::hangs() const {
    return nowMs() - lastLookMs_.load(std::memory_order_relaxed) > hangsAfterMs;
}

std::shared_ptr<Sent> ThreadQueue::takeSent() {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (sent_.empty()) return nullptr;
    const std::shared_ptr<Sent> first = std::move(sent_.front());
    sent_.pop_front();
    return first;
}

bool ThreadQueue::takePosted(MSG& message, HWND window, UINT lowest, UINT highest) {
    const bool isForAny = lowest == 0 && highest == 0;
    const auto fits = [&](const MSG& posted) {
        return (window == nullptr || posted.hwnd == window) &&
               (isForAny || (posted.message >= lowest && posted.message <= highest));
    };
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = std::find_if(posted_.begin(), posted_.end(), fits);
    if (found != posted_.end()) {
        message = *found;
        posted_.erase(found);
        return true;
    }
    if (!quits_) return false;
    quits_ = false;
    message = {nullptr, WM_QUIT, exitCode_, 0};
    return true;
}

void ThreadQueue::quit(int exitCode) {
    const std::lock_guard<std::mutex> guard(mutex_);
    quits_ = true;
    exitCode_ = static_cast<WPARAM>(exitCode);
}

bool ThreadQueue::isEmpty() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return posted_.empty() && sent_.empty() && !quits_;
}

void ThreadQueue::wait(Until until) {
    std::unique_lock<std::mutex> guard(mutex_);
    changed_.wait_until(guard, until, [&] { return !posted_.empty() || !sent_.empty() || quits_; });
}

bool ThreadQueue::awaitOutcome(const Sent& message, bool takesSent, Until until) {
    std::unique_lock<std::mutex> guard(mutex_);
    const auto isOver = [&] { return message.state != Sent::waiting; };
    changed_.wait_until(guard, until, [&] { return isOver() || (takesSent && !sent_.empty()); });
    return isOver();
}

std::deque<std::shared_ptr<Sent>> ThreadQueue::takeAllSent(HWND window) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto isOfOther = [&](const auto& message) {
        return window != nullptr && message->window != window;
    };
    const auto first = std::stable_partition(sent_.begin(), sent_.end(), isOfOther);
    std::deque<std::shared_ptr<Sent>> taken(first, sent_.end());
    sent_.erase(first, sent_.end());
    return taken;
}

void ThreadQueue::dropAllOf(HWND window) {
    for (const auto& message : takeAllSent(window)) message->sender->finish(*message, Sent::lost);
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto isOf = [&](const MSG& message) { return message.hwnd == window; };
    posted_.erase(std::remove_if(posted_.begin(), posted_.end(), isOf), posted_.end());
}

void ThreadQueue::noteLook() {
    lastLookMs_.store(nowMs(), std::memory_order_relaxed);
}

void ThreadQueue::end() {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        ended_ = true;
    }
    for (const auto& message : takeAllSent(nullptr)) message->sender->finish(*message, Sent::lost);
}

}  // namespace desktop
