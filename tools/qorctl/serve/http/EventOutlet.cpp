#include "serve/http/EventOutlet.h"

#include <chrono>
#include <utility>

namespace qorctl::serve::http {
namespace {

constexpr std::size_t behindBytes = 256 * 1024;
/// Beyond this also what should not be left out is.
constexpr std::size_t mostWaitingBytes = 16 * behindBytes;

}  // namespace

void EventOutlet::tell(const char* event, const std::string& params) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (waiting_.size() > mostWaitingBytes) return;
    waiting_.append("event: ").append(event).append("\ndata: ").append(params).append("\n\n");
    changed_.notify_all();
}

bool EventOutlet::isBehind() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return waiting_.size() + beingSent_ > behindBytes;
}

std::string EventOutlet::next(unsigned int waitMs) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, std::chrono::milliseconds(waitMs),
                      [this] { return !waiting_.empty(); });
    beingSent_ = waiting_.size();
    return std::exchange(waiting_, {});
}

void EventOutlet::noteSent() {
    const std::lock_guard<std::mutex> guard(mutex_);
    beingSent_ = 0;
}

}  // namespace qorctl::serve::http
