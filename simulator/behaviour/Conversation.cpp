#include "behaviour/Conversation.h"

#include <algorithm>
#include <utility>

#include "behaviour/Dispatch.h"
#include "behaviour/Flood.h"
#include "behaviour/ParameterRequests.h"
#include "behaviour/RequestFacts.h"
#include "behaviour/SessionRequests.h"

namespace simulator {

namespace {

/// Of a flood that are posted at once: an answer has to wait for so many to be sent.
constexpr std::uint32_t messagesPerSlice = 10;

Delivery withFaults(Record record, const Action& action) {
    Delivery delivery;
    delivery.record = std::move(record);
    delivery.splitAfterBytes = action.splitAfterBytes;
    delivery.gapMs = action.gapMs;
    delivery.mergeWithNext = action.mergeWithNext;
    delivery.closeMid = action.close == CloseWhen::Mid;
    delivery.closeAfter = action.close == CloseWhen::After;
    return delivery;
}

/// What the result of a window message says instead of an acknowledgement.
bool isAccepted(const Outcome& outcome, const Action& action) {
    return !outcome.refusal &&
           action.ackStatus.value_or(PingPayload::Handled) != PingPayload::NotHandled;
}

void dropAcknowledgements(std::vector<AnswerRecord>& records) {
    const auto isOne = [](const AnswerRecord& answer) { return answer.isAcknowledgement; };
    records.erase(std::remove_if(records.begin(), records.end(), isOne), records.end());
}

}  // namespace

Conversation::Conversation(const EcuModel& model, Script script, const ConversationOptions& options,
                           ExportFiles exports, RecordLog& recordLog, Log& log, std::uint64_t nowMs)
    : ecu_(model),
      script_(std::move(script)),
      options_(options),
      exports_(std::move(exports)),
      recordLog_(recordLog),
      log_(log),
      startMs_(nowMs) {
    timeline_.plan(script_.scheduledSince(Since::Start), nowMs);
}

void Conversation::clientConnected(std::uint64_t nowMs) {
    clientPresent_ = true;
    timeline_.plan(script_.scheduledSince(Since::Client), nowMs);
}

void Conversation::clientDisconnected() {
    clientPresent_ = false;
    outbox_.clear();
    heldBack_.clear();
}

Reception Conversation::received(const Record& record, std::uint64_t nowMs) {
    ecu_.parameters.advanceTo(nowMs - startMs_);
    if (record.isReply) {
        logReceived(record, {}, nowMs);
        noteReply(record);
        return {};
    }
    // A copy: carrying out may change what the script decides next.
    const Action action = script_.actionFor(factsOf(record, ecu_.parameters));
    if (!action.note.empty()) log_.info("script: " + action.note);
    Reception reception{true, action.hangMs, action.windowAnswer};
    std::optional<Outcome> outcome;
    if (action.answer != AnswerKind::Silent) {
        outcome = carryOut(record, action, nowMs);
        reception.accepted = isAccepted(*outcome, action);
    }
    logReceived(record, reception, nowMs);
    if (outcome) answer(record, *outcome, action, nowMs);
    timeline_.plan(action.then, nowMs + action.delayMs);
    tick(nowMs);
    return reception;
}

void Conversation::logReceived(const Record& record, const Reception& reception,
                               std::uint64_t nowMs) {
    MessageFate fate;
    if (options_.transport == Transport::WindowMessages) fate.result = reception.accepted ? 1 : 0;
    recordLog_.record(RecordLog::Direction::In, record, nowMs, fate);
}

// Our own commands are acknowledged by the client; nothing waits for that.
void Conversation::noteReply(const Record& record) {
    if (record.id != CommandId::Ping) return;
    if (PingPayload::read(record.payload).status == PingPayload::NotHandled) {
        log_.info("the client did not handle command " + std::to_string(record.requestId));
    }
}

Outcome Conversation::carryOut(const Record& request, const Action& action, std::uint64_t nowMs) {
    if (action.answer == AnswerKind::Refuse) return Outcome::refused("the script says so");
    const std::uint64_t answerMs = nowMs + action.delayMs;
    const Record asked =
        action.answer == AnswerKind::Another ? askingForAnother(request, ecu_.parameters) : request;
    Outcome outcome = dispatch(ecu_, asked, planFor(action), answerMs);
    const bool connects = request.id == CommandId::KwpConnect && asksForConnection(request.payload);
    if (connects && !outcome.refusal) {
        timeline_.plan(script_.scheduledSince(Since::Connect), answerMs);
    }
    return outcome;
}

BootstrapPlan Conversation::planFor(const Action& action) const {
    if (action.bootstrap) return *action.bootstrap;
    if (script_.bootstrap()) return *script_.bootstrap();
    BootstrapPlan plan;
    plan.durationMs = options_.connectMs;
    return plan;
}

void Conversation::answer(const Record& request, const Outcome& outcome, const Action& action,
                          std::uint64_t nowMs) {
    if (outcome.refusal) log_.info(commandName(request.id) + " refused: " + *outcome.refusal);
    if (!outcome.note.empty()) log_.info(outcome.note);
    Record named = request;
    if (action.answer == AnswerKind::ForeignId) named.requestId = previousRequestId_;
    previousRequestId_ = request.requestId;
    std::vector<AnswerRecord> records = composeAnswer(named, outcome, action, options_.answerStyle,
                                                      [this] { return freshRequestId(); });
    if (!action.rawBefore.empty()) {
        Delivery raw;
        raw.raw = action.rawBefore;
        post(std::move(raw), nowMs + action.delayMs);
    }
    if (action.close == CloseWhen::Before) {
        happen(CloseEffect(), nowMs + action.delayMs);
        return;
    }
    if (options_.transport == Transport::WindowMessages) dropAcknowledgements(records);
    if (action.afterNext) {
        heldBack_.emplace_back(std::move(records), action);
    } else {
        postAnswer(std::move(records), action, nowMs);
        for (auto& [held, itsAction] : heldBack_) postAnswer(std::move(held), itsAction, nowMs);
        heldBack_.clear();
    }
    timeline_.plan(outcome.then, nowMs + action.delayMs);
}

// Only the last record suffers the faults.
void Conversation::postAnswer(std::vector<AnswerRecord> records, const Action& action,
                              std::uint64_t nowMs) {
    if (records.empty()) return;
    for (std::size_t i = 0; i + 1 < records.size(); ++i) {
        Delivery first;
        first.record = std::move(records[i].record);
        post(std::move(first), nowMs + records[i].delayMs);
    }
    const Delivery last = withFaults(std::move(records.back().record), action);
    for (std::uint32_t i = 0; i <= action.duplicates; ++i) {
        post(last, nowMs + records.back().delayMs + std::uint64_t{i} * action.duplicateAfterMs);
    }
}

void Conversation::tick(std::uint64_t nowMs) {
    ecu_.parameters.advanceTo(nowMs - startMs_);
    for (const ParamDataPayload& report : ecu_.bootstrap.poll(nowMs)) {
        postOwn(CommandId::ReceiveParamData, report.write(), nowMs);
    }
    while (const std::optional<Effect> effect = timeline_.take(nowMs)) {
        std::visit([&](const auto& kind) { happen(kind, nowMs); }, *effect);
    }
    const std::vector<std::uint32_t> due = ecu_.subscription.poll(nowMs);
    if (!ecu_.bootstrap.isOnline()) return;
    for (const std::uint32_t index : due) {
        const ParamDataPayload value{static_cast<std::int32_t>(index),
                                     ecu_.parameters.firstValue(index)};
        postOwn(CommandId::ReceiveParamData, value.write(), nowMs);
    }
}

std::optional<Piece> Conversation::take(std::uint64_t nowMs) {
    return outbox_.take(nowMs);
}

void Conversation::logSent(const Piece& piece, std::uint64_t nowMs, const MessageFate& fate) {
    constexpr auto out = RecordLog::Direction::Out;
    if (piece.record) {
        recordLog_.record(out, *piece.record, nowMs, fate);
    } else if (options_.transport == Transport::WindowMessages) {
        recordLog_.message(out, piece.bytes, piece.form, nowMs, fate);
    } else if (!piece.bytes.empty() && !piece.isRest) {
        recordLog_.raw(out, piece.bytes, nowMs);
    }
}

std::optional<std::uint64_t> Conversation::nextMs() const {
    std::optional<std::uint64_t> next;
    for (const auto& candidate : {outbox_.nextMs(), timeline_.nextMs(), ecu_.bootstrap.nextMs(),
                                  ecu_.subscription.nextMs()}) {
        if (candidate && (!next || *candidate < *next)) next = candidate;
    }
    return next;
}

void Conversation::post(Delivery delivery, std::uint64_t dueMs) {
    if (clientPresent_) outbox_.post(std::move(delivery), dueMs);
}

void Conversation::postOwn(CommandId id, std::string payload, std::uint64_t nowMs) {
    Delivery delivery;
    delivery.record = Record{id, false, freshRequestId(), std::move(payload)};
    post(std::move(delivery), nowMs);
}

void Conversation::happen(const PushEffect& push, std::uint64_t nowMs) {
    const ParamDataPayload value{push.index, push.value};
    postOwn(CommandId::ReceiveParamData, value.write(), nowMs);
}

void Conversation::happen(const MessageBoxEffect& box, std::uint64_t nowMs) {
    postOwn(CommandId::RedirectUi, box.box.write(), nowMs);
}

void Conversation::happen(const EditEffect& edit, std::uint64_t nowMs) {
    EditPayload payload = edit.edit;
    if (edit.exportBytes) {
        const bool additional = payload.stage == EditPayload::AdditionalExport;
        std::vector<std::string>& files = additional ? payload.addFiles : payload.files;
        try {
            files.insert(files.begin(), exports_.create(*edit.exportBytes));
        } catch (const std::exception& error) {
            log_.error(error.what());
            return;
        }
    }
    postOwn(CommandId::StartEdit, payload.write(), nowMs);
}

void Conversation::happen(const RecordEffect& record, std::uint64_t nowMs) {
    Delivery delivery;
    delivery.record = Record{record.id, record.isReply, record.requestId.value_or(freshRequestId()),
                             record.payload};
    post(std::move(delivery), nowMs);
}

void Conversation::happen(const RawEffect& raw, std::uint64_t nowMs) {
    Delivery delivery;
    delivery.raw = raw.bytes;
    post(std::move(delivery), nowMs);
}

void Conversation::happen(const MessageEffect& message, std::uint64_t nowMs) {
    Delivery delivery;
    delivery.raw = message.bytes;
    delivery.form = message.form;
    post(std::move(delivery), nowMs);
}

void Conversation::happen(const FloodEffect& flood, std::uint64_t nowMs) {
    const std::uint32_t slice = std::min(flood.count, messagesPerSlice);
    for (std::uint32_t i = 0; i < slice; ++i) post(floodMessage(flood, flood.first + i), nowMs);
    if (flood.count == slice) return;
    FloodEffect rest = flood;
    rest.first += slice;
    rest.count -= slice;
    timeline_.plan({{1, rest}}, nowMs);
}

void Conversation::happen(const CloseEffect& /*close*/, std::uint64_t nowMs) {
    Delivery delivery;
    delivery.closeAfter = true;
    post(std::move(delivery), nowMs);
}

void Conversation::happen(const OnlineEffect& online, std::uint64_t /*nowMs*/) {
    ecu_.bootstrap.setOnline(online.online);
}

void Conversation::happen(const StallEffect& stall, std::uint64_t /*nowMs*/) {
    if (stall.index) {
        ecu_.subscription.stall(*stall.index, stall.stalled);
    } else {
        ecu_.subscription.stallAll(stall.stalled);
    }
}

void Conversation::happen(const ExitEffect& exit, std::uint64_t /*nowMs*/) {
    exit_ = exit;
}

}  // namespace simulator
