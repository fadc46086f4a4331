#include "facade/FacadeImpl.h"

#include <algorithm>

#include "common/Clock.h"

namespace {

constexpr std::uint32_t onlineMs = 2000;

}  // namespace

bool QorControlFacade::Impl::isEcuOnline() {
    const LockGuard guard(stateLock);
    return static_cast<std::uint32_t>(lastQorContactTick + onlineMs) > common::tickCount();
}

void QorControlFacade::Impl::buryQueue(std::unique_ptr<AnswerQueue> queue,
                                       const std::shared_ptr<CmdData>& request) {
    const LockGuard guard(registryLock);
    const auto isOutOfReach = [](const BuriedQueue& buried) { return buried.request.expired(); };
    buriedQueues_.erase(std::remove_if(buriedQueues_.begin(), buriedQueues_.end(), isOutOfReach),
                        buriedQueues_.end());
    buriedQueues_.push_back({std::move(queue), request});
}
