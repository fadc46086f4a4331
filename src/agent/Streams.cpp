#include <algorithm>
#include <iterator>
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
    forgetCursors(registered);
    if (registered.empty()) return;
    std::map<const void*, bool> tried;
    const Epoch epoch = client_->epoch();
    for (const auto& entry : registered) {
        const channel::RepeatRead& stream = entry.second;
        // What another QOR was set up to send, this one does not send.
        bool prepared = stream.prepared && stream.epoch == epoch;
        if (stream.sink != nullptr && stream.prepared && !prepared) feedSink(stream, stream.epoch);
        if (!prepared && !isQorNew_ && hasQorAnsweredLately())
            prepared = tried[entry.first] = prepare(stream, epoch);
        if (prepared && stream.queue != nullptr)
            fillQueue(*stream.queue, stream.names);
        else if (prepared)
            feedSink(stream, epoch);
    }
    for (const auto& [target, isPrepared] : tried) {
        const channel::RepeatRead& entry = registered[target];
        const bool isLive =
            channel_->streams.notePreparation(target, isPrepared, epoch, entry.names);
        // A stop that came meanwhile has taken back what another QOR had been asked for.
        const bool isToEnd = entry.prepared || entry.sink != nullptr;
        if (!isLive && isPrepared && isToEnd) client_->unsubscribe(epoch, entry.names);
    }
}

bool QorProtocolAgent::prepare(const channel::RepeatRead& stream, Epoch epoch) {
    if (stream.sink == nullptr) return client_->subscribe(epoch, stream.names);
    client_->beginRequest(nullptr);
    const bool prepared = client_->subscribe(epoch, stream.names, &cursors_[stream.sink.get()]);
    client_->endRequest();
    stream.sink->notePreparation(prepared ? common::Verdict() : client_->verdict());
    return prepared;
}

void QorProtocolAgent::forgetCursors(const channel::StreamRegistry::Registrations& registered) {
    for (auto entry = cursors_.begin(); entry != cursors_.end();)
        entry = registered.count(entry->first) == 0 ? cursors_.erase(entry) : std::next(entry);
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
        channel_->values.store(name, {{value}, {}, {}, sample.tick, false});
    }
    if (!batch.empty()) queue.push(batch);
}

void QorProtocolAgent::feedSink(const channel::RepeatRead& stream, Epoch epoch) {
    struct Named {
        std::size_t name;
        ArrivedValue arrived;
    };
    std::vector<ArrivalCursor>& cursors = cursors_[stream.sink.get()];
    const auto collected = client_->collectArrivals(epoch, cursors);
    std::vector<Named> all;
    for (std::size_t i = 0; i < collected.size(); ++i)
        for (const ArrivedValue& each : collected[i]) all.push_back({i, each});
    std::sort(all.begin(), all.end(), [](const Named& one, const Named& other) {
        return one.arrived.order < other.arrived.order;
    });
    for (const auto& [name, arrived] : all) {
        std::uint64_t& taken = cursors[name].taken;
        stream.sink->take({name, arrived.value, arrived.tick, arrived.number - taken - 1});
        taken = arrived.number;
    }
    if (epoch != epoch_) return;
    for (std::size_t i = 0; i < collected.size(); ++i)
        if (!collected[i].empty())
            channel_->values.store(
                stream.names[i],
                {{collected[i].back().value}, {}, {}, collected[i].back().tick, false});
}

bool QorProtocolAgent::stopParamStream(const Request<channel::CmdRepeatRead>& request) {
    return client_->unsubscribe(request->epoch, request->names) && request.succeed();
}

void QorProtocolAgent::streamDtcs() {
    const bool isWanted = dtcQueue_ != nullptr || dtcSink_ != nullptr;
    if (dtcNextTick_ > common::now() || !isWanted) return;
    const common::Verdict verdict = readDtcs();
    if (verdict.cause == qorcontrol::Cause::none) {
        dtcFailures_ = 0;
    } else if (++dtcFailures_ > silentFailures) {
        if (dtcQueue_ != nullptr)
            dtcQueue_->push({QorControlFacade::DtcDescription()});
        else
            dtcSink_->noteSilence(verdict);
        dtcFailures_ = 0;
    }
    // From the end of the read, so that a slow one does not shorten the pause.
    dtcNextTick_ = common::now() + dtcPeriodMs_;
}

common::Verdict QorProtocolAgent::readDtcs() {
    using qorcontrol::Cause;
    if (!hasQorAnsweredLately())
        return {Cause::ecuOffline, "QOR tells of no ECU, and until it does it is not asked"};
    if (passOnDtcs()) return {};
    common::Verdict verdict = client_->verdict();
    if (verdict.cause == Cause::none) verdict.cause = Cause::noData;
    return verdict;
}

bool QorProtocolAgent::passOnDtcs() {
    std::vector<protocol::DtcRecord> dtcs;
    client_->beginRequest(nullptr);
    const bool succeeded = client_->getDtc(dtcStatusMask_, dtcs, dtcStatusMask_);
    client_->endRequest();
    if (!succeeded) return false;
    if (dtcQueue_ != nullptr)
        dtcQueue_->push(toDescriptions(std::move(dtcs)));
    else
        dtcSink_->take(toDescriptions(std::move(dtcs)), client_->verdict().mayBelongToEarlier);
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
