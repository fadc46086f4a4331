#include <map>
#include <utility>

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
    return channel_->contact.isWithin(answeredLatelyMs);
}

void QorProtocolAgent::streamParams() {
    auto registered = channel_->streams.all();
    if (registered.empty()) return;
    std::map<channel::ParamQueue*, bool> tried;
    const Epoch epoch = client_->epoch();
    for (const auto& entry : registered) {
        // What another QOR was set up to send, this one does not send.
        bool prepared = entry.second.prepared && entry.second.epoch == epoch;
        if (!prepared && !isQorNew_ && hasQorAnsweredLately())
            prepared = tried[entry.first] = client_->subscribe(epoch, entry.second.names);
        if (prepared) fillQueue(*entry.first, entry.second.names);
    }
    for (const auto& [queue, isPrepared] : tried) {
        const channel::RepeatRead& entry = registered[queue];
        const bool isLive = channel_->streams.notePreparation(queue, isPrepared, epoch);
        // A stop that came meanwhile has taken back what another QOR had been asked for.
        if (!isLive && isPrepared && entry.prepared) client_->unsubscribe(epoch, entry.names);
    }
}

void QorProtocolAgent::fillQueue(channel::ParamQueue& queue,
                                 const std::vector<std::string>& names) {
    std::vector<QorControlFacade::ParamValue> batch;
    batch.reserve(names.size());
    for (const std::string& name : names) {
        SampledValue sample;
        if (!client_->peekParamData(name, sample)) continue;
        if (!channel_->values.isYoungerThan(freshPeriods, sample.tick)) continue;
        const double value = sample.values.front();
        batch.push_back({name, {value}});
        channel_->values.store(name, {{value}, {}, {}, sample.tick});
    }
    if (!batch.empty()) queue.push(batch);
}

bool QorProtocolAgent::stopParamStream(const Request<channel::CmdRepeatRead>& request) {
    return client_->unsubscribe(request->epoch, request->names) && request.succeed();
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

bool QorProtocolAgent::readDtcsFor(channel::DtcQueue& queue) {
    std::vector<protocol::DtcRecord> dtcs;
    if (!client_->getDtc(dtcStatusMask_, dtcs, dtcStatusMask_)) return false;
    queue.push(toDescriptions(std::move(dtcs)));
    return true;
}

bool QorProtocolAgent::startDtcStream(const Request<channel::CmdDataDtc>& request) {
    directDtcs(*request);
    return request.succeed();
}

bool QorProtocolAgent::stopDtcStream(const Request<channel::CmdDataDtc>& request) {
    directDtcs(*request);  // which names no queue
    return request.succeed();
}

void QorProtocolAgent::directDtcs(const channel::CmdDataDtc& wanted) {
    dtcQueue_ = wanted.queue;
    dtcStatusMask_ = wanted.statusMask;
    dtcPeriodMs_ = wanted.periodMs;
    dtcNextTick_ = common::Moment();
    dtcFailures_ = 0;
}
