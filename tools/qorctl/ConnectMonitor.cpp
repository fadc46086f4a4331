#include "ConnectMonitor.h"

#include "Interrupt.h"

namespace qorctl {

bool ConnectMonitor::isCancelled() {
    accepted_ = true;
    return interrupt::isRequested();
}

void ConnectMonitor::reportError(const std::string& message, unsigned int) {
    const std::lock_guard<std::mutex> guard(mutex_);
    error_ = message;
}

std::string ConnectMonitor::error() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return error_;
}

}  // namespace qorctl
