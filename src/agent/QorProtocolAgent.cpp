#include "agent/QorProtocolAgent.h"

#include <stdexcept>
#include <utility>

#include "agent/Answering.h"
#include "common/Clock.h"
#include "common/Paths.h"
#include "common/Pump.h"

namespace {

constexpr unsigned int launchMs = 10000;
constexpr unsigned int afterLaunchMs = 100;
constexpr unsigned int requestWaitMs = 1;

}  // namespace

struct QorProtocolAgent::Route {
    std::uint32_t kind;
    Handler handler;
};

const QorProtocolAgent::Route QorProtocolAgent::routes[] = {
    {Impl::kindOpenModel, &QorProtocolAgent::openModel},
    {Impl::kindConnect, &QorProtocolAgent::performConnect},
    {Impl::kindGetParamDescription, &QorProtocolAgent::readDescription},
    {Impl::kindGetParamData, &QorProtocolAgent::readParam},
    {Impl::kindSetParamData, &QorProtocolAgent::writeParam},
    {Impl::kindStartDtcRead, &QorProtocolAgent::setDtcStream},
    {Impl::kindStopDtcRead, &QorProtocolAgent::setDtcStream},
    {Impl::kindClearDtc, &QorProtocolAgent::clearDtc},
    {Impl::kindSetEcuSegment, &QorProtocolAgent::selectSegment},
    {Impl::kindStopParamRead, &QorProtocolAgent::stopParamStream},
    {Impl::kindGetDtcByStatus, &QorProtocolAgent::readDtc},
    {Impl::kindSendKwpCommand, &QorProtocolAgent::sendKwp},
    {Impl::kindConnectCanBus, &QorProtocolAgent::connectCanBus},
    {Impl::kindGetCanBusData, &QorProtocolAgent::readCanBus},
    {Impl::kindGetParamDataAtOnce, &QorProtocolAgent::readTogether},
    {Impl::kindSetDynamicData, &QorProtocolAgent::setDynamic},
    {Impl::kindPingQor, &QorProtocolAgent::ping},
    {Impl::kindSendCanBusMsg, &QorProtocolAgent::sendCanBus},
    {Impl::kindStartDirectCtrl, &QorProtocolAgent::controlParam},
    {Impl::kindStopDirectCtrl, &QorProtocolAgent::controlParam},
};

QorProtocolAgent::QorProtocolAgent(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) {}

QorProtocolAgent::QorProtocolAgent(std::shared_ptr<Impl> impl,
                                   std::unique_ptr<ClientExternalOperating> client)
    : impl_(std::move(impl)), client_(client.release()) {}

void QorProtocolAgent::start() {
    const std::string resolved = common::resolveAgainstExecutable(impl_->settingsPath);
    // A path that cannot be resolved cannot be read either; the complaint then names it as given.
    client_.reset(ClientExternalOperating::create(resolved.empty() ? impl_->settingsPath : resolved)
                      .release());
    {
        const common::LockGuard guard(impl_->stateLock);
        impl_->qorExecutablePath = client_->executablePath();
    }
    if (!client_->launch(launchMs))
        throw std::runtime_error("Fail to launch QOR external operating");
    common::sleepMs(afterLaunchMs);
}

void QorProtocolAgent::step() {
    noteEpoch();
    noteOnlineState();
    common::pumpCopyData();
    Impl::ProtocolCmd command;
    if (!impl_->commandQueue.pop(command, requestWaitMs)) {
        streamParams();
        streamDtcs();
        return;
    }
    carryOut(command);
}

void QorProtocolAgent::carryOut(const Impl::ProtocolCmd& command) {
    // Its caller was told that it failed; carried out now, it would be a surprise.
    if (command.replyQueue != nullptr && command.replyQueue->isGivenUp()) return;
    client_->beginRequest(command.replyQueue);
    const bool succeeded = handle(command);
    client_->endRequest();
    if (!succeeded && command.replyQueue != nullptr) command.replyQueue->push(Impl::CmdResponse());
}

void QorProtocolAgent::noteOnlineState() {
    if (!client_->isEcuOnline()) return;
    isQorNew_ = false;
    const common::LockGuard guard(impl_->stateLock);
    impl_->lastQorContactTick = common::now();
}

void QorProtocolAgent::noteEpoch() {
    const Epoch epoch = client_->epoch();
    if (epoch == epoch_) return;
    epoch_ = epoch;
    isQorNew_ = true;
    // What the host last read or wrote was another QOR's, or another model's.
    const common::LockGuard guard(impl_->stateLock);
    impl_->cacheBegin = common::now();
}

QorProtocolAgent::Handler QorProtocolAgent::handlerOf(std::uint32_t kind) const {
    for (const Route& route : routes)
        if (route.kind == kind) return route.handler;
    return nullptr;
}

bool QorProtocolAgent::handle(const Impl::ProtocolCmd& command) {
    const Handler handler = handlerOf(command.kind);
    return handler != nullptr && (this->*handler)(command);
}

void QorProtocolAgent::finish() {
    {
        const common::LockGuard guard(impl_->stateLock);
        if (impl_->qorExecutablePath.empty()) return;
    }
    client_->disconnectEcu();
    client_->shutdown(true, true);
}
