#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "common/Clock.h"

namespace {

/// The reserved ids under which QOR reports the state of a connect.
constexpr std::int32_t idEcuOnline = -10;
constexpr std::int32_t idProgress = -11;
constexpr std::int32_t idResult = -12;

/// Truncated toward zero; 0 for what no integer can hold.
std::int32_t asInteger(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double whole = std::trunc(value);
    if (!(whole >= Limits::min() && whole <= Limits::max())) return 0;
    return static_cast<std::int32_t>(whole);
}

/// Far more results than any real connect brings; what a peer gone mad adds beyond it is dropped.
constexpr std::size_t maxResults = 1000;

/// Keeps an answer, if somebody waits for it.
template <class T>
void arrive(Arrival<T>& arrival, T content) {
    if (!arrival.expected) return;
    arrival.content = std::move(content);
    arrival.arrived = true;
}

void keepValue(ParamTables& params, std::int32_t id, double value) {
    const common::Moment tick = common::now();
    params.storeSample(id, {{value}, {}, {}, tick});
    params.noteArrival(id, value, tick);
}

}  // namespace

bool ClientExternalOperating::handleCommand(IExternalCommand& command,
                                            IExternalCommand::ICommandReplyer& replyer) {
    try {
        if (auto* const ours = dynamic_cast<IClientCommand*>(&command))
            return ours->onReply(&replyer, this);
        return command.execute(&replyer);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void ClientExternalOperating::onParamValue(std::int32_t id, double value) {
    const auto state = state_.lock();
    switch (id) {
        case idEcuOnline:
            if (value == 0.0) state->ecuOnline = false;
            if (value == 1.0) state->ecuOnline = true;
            return;
        case idProgress:
            state->bootstrapProgress = asInteger(value);
            ++state->bootstrapSteps;
            return;
        case idResult:
            state->bootstrapProgress = -1;
            if (state->bootstrapResults.size() < maxResults)
                state->bootstrapResults.push_back(asInteger(value));
            return;
        default:
            keepValue(state->params, id, value);
    }
}

void ClientExternalOperating::onParamInfo(const protocol::ParamInfo& record) {
    state_.lock()->params.storeDescription(record.name, record);
}

void ClientExternalOperating::onDirectCtrl(protocol::DirectCtrl record) {
    state_.lock()->params.storeValues(static_cast<std::int32_t>(record.paramIndex),
                                      std::move(record.values));
}

void ClientExternalOperating::onStaticParam(protocol::StaticParam record) {
    SampledValue sample{std::move(record.first), std::move(record.second), std::move(record.third),
                        common::now()};
    state_.lock()->params.storeSample(static_cast<std::int32_t>(record.paramIndex),
                                      std::move(sample));
}

void ClientExternalOperating::onDtcs(protocol::GetDtc record) {
    arrive(state_.lock()->dtcs, std::move(record.dtcs));
}

void ClientExternalOperating::onCanBusData(protocol::CanBusData record) {
    arrive(state_.lock()->canFrames, std::move(record.items));
}

void ClientExternalOperating::onKwpAnswer(protocol::ExecKwp record) {
    arrive(state_.lock()->kwpAnswer, std::move(record));
}

void ClientExternalOperating::onModelDescription(const protocol::GetHex&) {
    // QOR may send it unasked, which is accepted; no operation asks for it.
}

void ClientExternalOperating::onNewQor() {
    const auto state = state_.lock();
    ++state->epoch;
    state->params.clear();
    state->ecuOnline = false;  // until this one says so
}
