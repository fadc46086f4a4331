#include <map>
#include <utility>

#include "agent/Answering.h"
#include "agent/DtcConversion.h"
#include "agent/QorProtocolAgent.h"
#include "common/Clock.h"

namespace {

constexpr std::uint32_t answeredLatelyMs = 1000;
constexpr std::uint32_t freshPeriods = 3;
/// So many reads of trouble codes may fail in a row before the host is told.
constexpr std::uint32_t silentFailures = 3;

}  // namespace

bool QorProtocolAgent::hasQorAnsweredLately() const {
    return impl_->lastQorContactTick.load() + answeredLatelyMs > common::now();
}

void QorProtocolAgent::streamParams() {
    std::map<Impl::ParamQueue*, Impl::RepeatRead> registered;
    {
        const common::LockGuard guard(impl_->stateLock);
        if (impl_->repeatReads.empty()) return;
        registered = impl_->repeatReads;
    }
    std::map<Impl::ParamQueue*, bool> tried;
    const Epoch epoch = client_->epoch();
    for (const auto& entry : registered) {
        // What another QOR was set up to send, this one does not send.
        bool prepared = entry.second.prepared && entry.second.epoch == epoch;
        if (!prepared && !isQorNew_ && hasQorAnsweredLately())
            prepared = tried[entry.first] = client_->subscribe(epoch, entry.second.names);
        if (prepared) fillQueue(*entry.first, entry.second.names);
    }
    for (const auto& outcome : tried) {
        const Impl::RepeatRead& entry = registered[outcome.first];
        // A stop that came meanwhile has taken back what another QOR had been asked for.
        if (!writeBack(outcome.first, outcome.second, epoch) && outcome.second && entry.prepared)
            client_->unsubscribe(epoch, entry.names);
    }
}

bool QorProtocolAgent::writeBack(Impl::ParamQueue* queue, bool isPrepared, Epoch epoch) {
    const common::LockGuard guard(impl_->stateLock);
    const auto live = impl_->repeatReads.find(queue);
    if (live == impl_->repeatReads.end()) return false;
    live->second.prepared = isPrepared;
    live->second.epoch = epoch;
    return true;
}

void QorProtocolAgent::fillQueue(Impl::ParamQueue& queue, const std::vector<std::string>& names) {
    std::vector<QorControlFacade::ParamValue> batch;
    batch.reserve(names.size());
    for (const std::string& name : names) {
        SampledValue sample;
        if (!client_->peekParamData(name, sample) || !isFresh(sample.tick)) continue;
        const double value = sample.values.front();
        batch.push_back({name, {value}});
        const common::LockGuard guard(impl_->stateLock);
        impl_->paramValueCache[name] = Impl::CachedValue{{value}, {}, {}, sample.tick};
    }
    if (!batch.empty()) queue.push(batch);
}

bool QorProtocolAgent::isFresh(common::Moment arrivalTick) {
    const common::LockGuard guard(impl_->stateLock);
    const common::Moment end = arrivalTick + freshPeriods * impl_->readPeriodMs;
    return end > common::now();
}

bool QorProtocolAgent::stopParamStream(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdRepeatRead>(command);
    return request != nullptr && client_->unsubscribe(request->epoch, request->names) &&
           answer(command);
}

void QorProtocolAgent::streamDtcs() {
    if (dtcNextTick_ > common::now() || dtcQueue_ == nullptr) return;
    if (hasQorAnsweredLately() && readDtcsFor(*dtcQueue_)) {
        dtcFailures_ = 0;
    } else if (++dtcFailures_ > silentFailures) {
        dtcQueue_->push({QorControlFacade::DtcDescription()});
        dtcFailures_ = 0;
    }
    // From the end of the read, so that a slow one does not shorten the pause.
    dtcNextTick_ = common::now() + dtcPeriodMs_;
}

bool QorProtocolAgent::readDtcsFor(Impl::DtcQueue& queue) {
    std::vector<protocol::DtcRecord> dtcs;
    if (!client_->getDtc(dtcStatusMask_, dtcs, dtcStatusMask_)) return false;
    queue.push(toDescriptions(std::move(dtcs)));
    return true;
}

bool QorProtocolAgent::setDtcStream(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdDataDtc>(command);
    if (request == nullptr) return false;
    dtcQueue_ = request->queue;
    dtcStatusMask_ = request->statusMask;
    dtcPeriodMs_ = request->periodMs;
    dtcNextTick_ = common::Moment();
    dtcFailures_ = 0;
    return answer(command);
}
