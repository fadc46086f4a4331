#include "facade/FacadeImpl.h"

#include "common/Clock.h"
#include "common/Pump.h"

namespace {

constexpr std::uint32_t onlineMs = 2000;

}  // namespace

bool QorControlFacade::Impl::isEcuOnline() {
    const common::LockGuard guard(stateLock);
    return lastQorContactTick.load() + onlineMs > common::now();
}

bool QorControlFacade::Impl::isOperating() const {
    return mayBeOperating() && agentThread.state() == common::ThreadState::running;
}

bool QorControlFacade::Impl::protectedMessagePump() const {
    common::pumpOneMessage();
    return isOperating();
}
