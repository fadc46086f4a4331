#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"
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
        trouble_ = qorcontrol::Cause::outOfMemory;
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
            state->bootstrapFigure = state->bootstrapProgress = asInteger(value);
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
    const auto state = state_.lock();
    state->owedDescriptions.pay(record.name);
    state->params.storeDescription(record.name, record);
}

void ClientExternalOperating::onDirectCtrl(protocol::DirectCtrl record) {
    const auto index = static_cast<std::int32_t>(record.paramIndex);
    const auto state = state_.lock();
    // What tells of a write or of direct control is no answer to a read.
    if (record.operation <= protocol::DirectCtrl::readValues) state->owedValues.pay(index);
    state->params.storeValues(index, std::move(record.values));
}

void ClientExternalOperating::onStaticParam(protocol::StaticParam record) {
    SampledValue sample{std::move(record.first), std::move(record.second), std::move(record.third),
                        common::now()};
    const auto index = static_cast<std::int32_t>(record.paramIndex);
    const auto state = state_.lock();
    if (record.operation != protocol::StaticParam::writeArrays) state->owedSamples.pay(index);
    state->params.storeSample(index, std::move(sample));
}

void ClientExternalOperating::onDtcs(protocol::GetDtc record) {
    const auto state = state_.lock();
    state->owedAnswers.pay(Answer::troubleCodes);
    arrive(state->dtcs, std::move(record.dtcs));
}

void ClientExternalOperating::onCanBusData(protocol::CanBusData record) {
    const auto state = state_.lock();
    state->owedAnswers.pay(Answer::canValues);
    arrive(state->canFrames, std::move(record.items));
}

void ClientExternalOperating::onKwpAnswer(protocol::ExecKwp record) {
    const auto state = state_.lock();
    state->owedAnswers.pay(Answer::kwp);
    arrive(state->kwpAnswer, std::move(record));
}

void ClientExternalOperating::onModelDescription(const protocol::GetHex&) {
    // QOR may send it unasked, which is accepted; no operation asks for it.
}

void ClientExternalOperating::onRefused(std::uint32_t requestId) {
    const auto state = state_.lock();
    const std::shared_ptr<ILoan> loan = state->loans.take(requestId);
    if (loan != nullptr) loan->giveBack(*state);
}

void ClientExternalOperating::onNewQor() {
    const auto state = state_.lock();
    clientsend::beginEpoch(*state);
    // What was asked of the one before, nobody will ever see.
    state->owedAnswers.clear();
}
