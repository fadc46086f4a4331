#include "facade/FacadeImpl.h"

#include <iterator>

#include "common/Clock.h"
#include "common/Pump.h"

namespace {

constexpr std::uint32_t onlineMs = 2000;

}  // namespace

bool QorControlFacade::Impl::isEcuOnline() {
    const common::LockGuard guard(stateLock);
    return lastQorContactTick.load() + onlineMs > common::now();
}

bool QorControlFacade::Impl::protectedMessagePump() const {
    common::pumpOneMessage();
    return isOperating() && agentThread.state() == common::ThreadState::running;
}

void QorControlFacade::Impl::bury(Grave grave, std::unique_ptr<AnswerQueue> queue,
                                  const std::shared_ptr<CmdData>& request) noexcept {
    grave.front().queue = std::move(queue);
    grave.front().request = request;
    Grave outOfReach;  // deleted when the lock is free again
    const common::LockGuard guard(registryLock);
    for (auto buried = buriedQueues_.begin(); buried != buriedQueues_.end();) {
        const auto next = std::next(buried);
        if (buried->request.expired()) outOfReach.splice(outOfReach.end(), buriedQueues_, buried);
        buried = next;
    }
    buriedQueues_.splice(buriedQueues_.end(), grave);
}
