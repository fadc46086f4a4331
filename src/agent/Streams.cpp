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
    std::map<const void*, bool> tried;
    const Epoch epoch = client_->epoch();
    for (const auto& entry : registered) {
        // What another QOR was set up to send, this one does not send.
        bool prepared = entry.second.prepared && entry.second.epoch == epoch;
        if (!prepared && !isQorNew_ && hasQorAnsweredLately())
            prepared = tried[entry.first] =
                client_->subscribe(epoch, entry.second.names, entry.second.given.get());
        if (prepared && entry.second.queue != nullptr)
            fillQueue(*entry.second.queue, entry.second.names);
        else if (prepared)
            feedSink(entry.second, epoch);
    }
    for (const auto& [target, isPrepared] : tried) {
        const channel::RepeatRead& entry = registered[target];
        const bool isLive = channel_->streams.notePreparation(target, isPrepared, epoch);
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

void QorProtocolAgent::feedSink(const channel::RepeatRead& stream, Epoch epoch) {
    std::vector<ArrivedValue> arrived;
    for (std::size_t i = 0; i < stream.names.size(); ++i) {
        std::uint64_t& given = (*stream.given)[i];
        arrived.clear();
        client_->collectArrivals(epoch, stream.names[i], given, arrived);
        for (const ArrivedValue& each : arrived) {
            stream.sink->take({i, each.value, each.tick, each.number - given - 1});
            given = each.number;
        }
        if (!arrived.empty())
            channel_->values.store(stream.names[i],
                                   {{arrived.back().value}, {}, {}, arrived.back().tick});
    }
}

bool QorProtocolAgent::stopParamStream(const Request<channel::CmdRepeatRead>& request) {
    return client_->unsubscribe(request->epoch, request->names) && request.succeed();
}

void QorProtocolAgent::streamDtcs() {
    const bool isWanted = dtcQueue_ != nullptr || dtcSink_ != nullptr;
    if (dtcNextTick_ > common::now() || !isWanted) return;
    if (hasQorAnsweredLately() && passOnDtcs()) {
        dtcFailures_ = 0;
    } else if (++dtcFailures_ > silentFailures) {
        if (dtcQueue_ != nullptr)
            dtcQueue_->push({QorControlFacade::DtcDescription()});
        else
            dtcSink_->noteSilence();
        dtcFailures_ = 0;
    }
    // From the end of the read, so that a slow one does not shorten the pause.
    dtcNextTick_ = common::now() + dtcPeriodMs_;
}

bool QorProtocolAgent::passOnDtcs() {
    std::vector<protocol::DtcRecord> dtcs;
    if (!client_->getDtc(dtcStatusMask_, dtcs, dtcStatusMask_)) return false;
    if (dtcQueue_ != nullptr)
        dtcQueue_->push(toDescriptions(std::move(dtcs)));
    else
        dtcSink_->take(toDescriptions(std::move(dtcs)));
    return true;
}

bool QorProtocolAgent::startDtcStream(const Request<channel::CmdDataDtc>& request) {
    directDtcs(*request);
    return request.succeed();
}

bool QorProtocolAgent::stopDtcStream(const Request<channel::CmdDataDtc>& request) {
    directDtcs(*request);  // which names no target
    return request.succeed();
}

void QorProtocolAgent::directDtcs(const channel::CmdDataDtc& wanted) {
    dtcQueue_ = wanted.queue;
    dtcSink_ = wanted.sink;
    dtcStatusMask_ = wanted.statusMask;
    dtcPeriodMs_ = wanted.periodMs;
    dtcNextTick_ = common::Moment();
    dtcFailures_ = 0;
}
