#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"
#include "common/Clock.h"
#include "protocol/Commands.h"

using qorcontrol::Cause;

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

constexpr const char* whileTaken = "while QOR's answer was taken";

/// Keeps an answer, if somebody waits for it.
template <class T>
void arrive(Arrival<T>& arrival, T content) {
    if (!arrival.expected) return;
    arrival.content = std::move(content);
    arrival.arrived = true;
}

/// Data has come, for the request that it names or else for the oldest.
template <class Key>
void settle(ClientState& state, Owed<Key> ClientState::*debts, const Key& key,
            const Answered& answered) {
    if (!answered || !state.loans.settle(state, *answered, debts, key)) (state.*debts).pay(key);
    Loan<Key>* const asked = loanOf(state.asked.loan.get(), debts);
    if (asked == nullptr) return;
    using Names = typename Loan<Key>::Names;
    const Names named = answered == state.asked.requestId ? Names::own : Names::another;
    asked->noteData(key, answered ? named : Names::none);
}

/// Data that cannot be read has come, of this kind and for nobody knows whom.
void payUnread(ClientState& state, std::uint32_t commandId) {
    switch (commandId) {
        case CommandGetDTC::id:
            return state.owedAnswers.pay(Answer::troubleCodes);
        case CommandCanBusData::id:
            return state.owedAnswers.pay(Answer::canValues);
        case CommandExecKwp::id:
            return state.owedAnswers.pay(Answer::kwp);
        default:
            return;  // of the others it is not known what it was about
    }
}

/// What an answer of this kind does not bring will not come again. The request that it names is
/// owed nothing any more; one of another kind still waits. `payOldest`: for one that names none, or
/// a request that is not known.
template <class PayOldest>
void giveUpAnswer(ClientState& state, std::uint32_t commandId, const Answered& answered,
                  PayOldest payOldest) {
    const auto asked = answered ? state.loans.kindOf(*answered) : std::nullopt;
    if (!asked)
        payOldest();
    else if (*asked == commandId)
        state.loans.giveBack(state, *answered);
}

void keepValue(ParamTables& params, std::int32_t id, double value) {
    const common::Moment tick = common::now();
    params.storeSample(id, {{value}, {}, {}, tick});
    params.noteArrival(id, value, tick);
}

}  // namespace

bool ClientExternalOperating::handleCommand(IExternalCommand& command,
                                            IExternalCommand::ICommandReplyer& replyer) {
    const bool isTaken = dispatch(command, replyer);
    handled_.tell();
    return isTaken;
}

bool ClientExternalOperating::dispatch(IExternalCommand& command,
                                       IExternalCommand::ICommandReplyer& replyer) {
    const auto& received = static_cast<const ExternalCommand&>(command);
    const Answered answered = received.isReply() ? Answered(received.requestId()) : std::nullopt;
    try {
        auto* const ours = dynamic_cast<IClientCommand*>(&command);
        if (ours == nullptr) return command.execute(&replyer);
        if (answered) noteKind(received.getId(), *answered);
        return ours->onReply(&replyer, this);
    } catch (const std::bad_alloc&) {
        onTrouble(received.getId(), answered, Cause::outOfMemory, whileTaken);
        return false;
    }
}

void ClientExternalOperating::noteKind(std::uint32_t commandId, std::uint32_t requestId) {
    const auto state = state_.lock();
    Asked& asked = state->asked;
    if (!asked.mayBeAnsweredBy(commandId, requestId) || asked.commandId == commandId) return;
    asked.note(Cause::badAnswer, "QOR answered with a record of another kind", true);
}

void ClientExternalOperating::onTrouble(std::uint32_t commandId, const Answered& answered,
                                        Cause cause, const char* detail) {
    const auto state = state_.lock();
    if (state->asked.mayBeAnsweredBy(commandId, answered))
        state->asked.note(cause, detail, answered.has_value());
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

void ClientExternalOperating::onParamInfo(const protocol::ParamInfo& record,
                                          const Answered& answered) {
    const auto state = state_.lock();
    settle(*state, &ClientState::owedDescriptions, record.name, answered);
    state->params.storeDescription(record.name, record);
}

void ClientExternalOperating::onDirectCtrl(protocol::DirectCtrl record, const Answered& answered) {
    const auto index = static_cast<std::int32_t>(record.paramIndex);
    const auto state = state_.lock();
    // What tells of a write or of direct control is no answer to a read.
    if (record.operation <= protocol::DirectCtrl::readValues)
        settle(*state, &ClientState::owedValues, index, answered);
    state->params.storeValues(index, std::move(record.values));
}

void ClientExternalOperating::onStaticParam(protocol::StaticParam record,
                                            const Answered& answered) {
    SampledValue sample{std::move(record.first), std::move(record.second), std::move(record.third),
                        common::now()};
    const auto index = static_cast<std::int32_t>(record.paramIndex);
    const auto state = state_.lock();
    if (record.operation != protocol::StaticParam::writeArrays)
        settle(*state, &ClientState::owedSamples, index, answered);
    state->params.storeSample(index, std::move(sample));
}

void ClientExternalOperating::onDtcs(protocol::GetDtc record, const Answered& answered) {
    const auto state = state_.lock();
    settle(*state, &ClientState::owedAnswers, Answer::troubleCodes, answered);
    arrive(state->dtcs, std::move(record.dtcs));
}

void ClientExternalOperating::onCanBusData(protocol::CanBusData record, const Answered& answered) {
    const auto state = state_.lock();
    settle(*state, &ClientState::owedAnswers, Answer::canValues, answered);
    arrive(state->canFrames, std::move(record.items));
}

void ClientExternalOperating::onKwpAnswer(protocol::ExecKwp record, const Answered& answered) {
    const auto state = state_.lock();
    settle(*state, &ClientState::owedAnswers, Answer::kwp, answered);
    arrive(state->kwpAnswer, std::move(record));
}

void ClientExternalOperating::onModelDescription(const protocol::GetHex&) {
    // QOR may send it unasked, which is accepted; no operation asks for it.
}

void ClientExternalOperating::onRefused(std::uint32_t requestId) {
    const auto state = state_.lock();
    state->loans.giveBack(*state, requestId);
}

void ClientExternalOperating::onReadTogether(const std::set<std::int32_t>& lacking,
                                             const Answered& answered) {
    // Without a name it may be the answer to any read, and have left out nothing of that one.
    if (!answered && lacking.empty()) return;
    {
        const auto state = state_.lock();
        giveUpAnswer(*state, CommandReadTogether::id, answered, [&] {
            for (const std::int32_t index : lacking) state->owedValues.pay(index);
        });
    }
    // It counts only if the request that it names has got less than it asked for.
    onTrouble(CommandReadTogether::id, answered, Cause::badAnswer, "QOR's answer lacks values");
}

void ClientExternalOperating::onUnreadable(const UnreadRecord& record) {
    const Answered answered = record.isReply ? Answered(record.requestId) : std::nullopt;
    {
        const auto state = state_.lock();
        giveUpAnswer(*state, record.commandId, answered,
                     [&] { payUnread(*state, record.commandId); });
    }
    if (record.lacksMemory)
        onTrouble(record.commandId, answered, Cause::outOfMemory, whileTaken);
    else
        onTrouble(record.commandId, answered, Cause::badAnswer, "QOR's record cannot be read");
}

void ClientExternalOperating::onNewQor() {
    const auto state = state_.lock();
    clientsend::beginEpoch(*state);
    // What was asked of the one before, nobody will ever see.
    state->owedAnswers.clear();
}
