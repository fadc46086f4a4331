#include "cinterface/Process.h"

#include <atomic>

#include "cinterface/Session.h"
#include "cinterface/Stream.h"

namespace cinterface {
namespace {

std::atomic<Process*> instance{nullptr};

}  // namespace

Process& process() {
    Process* present = instance.load();
    if (present != nullptr) return *present;
    auto made = std::make_unique<Process>();
    // Another thread may have been quicker.
    return instance.compare_exchange_strong(present, made.get()) ? *made.release() : *present;
}

void forgetProcess() noexcept {
    delete instance.exchange(nullptr);
}

}  // namespace cinterface
