#include "facade/channel/AgentLife.h"

#include <new>
#include <utility>

#include "qorcontrol/Sleep.h"

namespace channel {

bool AgentLife::isOperating() const {
    return mayBeOperating() && thread_.state() == common::ThreadState::running;
}

void AgentLife::noteEnd(qorcontrol::Cause cause, const char* reason, const char* check) noexcept {
    try {
        auto end = std::make_shared<const AgentEnd>(AgentEnd{cause, reason, check});
        const auto kept = end_.lock();
        if (*kept == nullptr) *kept = std::move(end);
    } catch (const std::bad_alloc&) {
        // Whoever asks learns that it has ended.
    }
}

AgentLife::Turn::Turn(AgentLife& agent) : agent_(agent) {
    while (agent_.isBeingEnded_.exchange(true)) common::sleepMs(1);
}

}  // namespace channel
