#include "behaviour/Answer.h"

namespace simulator {

namespace {

AnswerStyle styleOf(AnswerKind kind, AnswerStyle usual) {
    if (kind == AnswerKind::Stamped) return AnswerStyle::Stamped;
    if (kind == AnswerKind::Separate) return AnswerStyle::Separate;
    return usual;
}

/// The same answer, but about something that nobody asked for.
std::string aboutAnother(CommandId id, const std::string& payload) {
    if (id == CommandId::GetParamInfo) {
        ParamInfoPayload info = ParamInfoPayload::read(payload);
        info.name += "_other";
        return info.write();
    }
    if (id == CommandId::DirectCtrl) {
        DirectCtrlPayload values = DirectCtrlPayload::read(payload);
        ++values.index;
        values.text += "_other";
        return values.write();
    }
    if (id == CommandId::StaticParam) {
        StaticParamPayload arrays = StaticParamPayload::read(payload);
        ++arrays.index;
        return arrays.write();
    }
    if (id == CommandId::ReadTogether) {
        ReadTogetherPayload values = ReadTogetherPayload::read(payload);
        for (std::uint32_t& index : values.indices) ++index;
        return values.write();
    }
    return payload;
}

std::string withFewerVectors(CommandId id, const std::string& payload) {
    if (id != CommandId::ReadTogether) return payload;
    ReadTogetherPayload values = ReadTogetherPayload::read(payload);
    if (!values.values.empty()) values.values.pop_back();
    return values.write();
}

void spoil(Record& answer, AnswerKind kind) {
    if (kind == AnswerKind::WrongName) answer.payload = aboutAnother(answer.id, answer.payload);
    if (kind == AnswerKind::FewerVectors) {
        answer.payload = withFewerVectors(answer.id, answer.payload);
    }
    if (kind != AnswerKind::WrongType) return;
    answer.id = answer.id == CommandId::GetHex ? CommandId::EcuSegment : CommandId::GetHex;
    answer.payload =
        answer.id == CommandId::GetHex ? HexPayload().write() : SegmentPayload().write();
}

}  // namespace

Record acknowledgement(const Record& request, std::uint32_t status) {
    return {CommandId::Ping, true, request.requestId, PingPayload{status}.write()};
}

std::vector<AnswerRecord> composeAnswer(const Record& request, const Outcome& outcome,
                                        const Action& action, AnswerStyle style,
                                        const std::function<std::uint32_t()>& nextRequestId) {
    const std::uint32_t delayMs = action.delayMs;
    if (outcome.refusal) {
        return {{acknowledgement(request, PingPayload::NotHandled), delayMs, true}};
    }
    const AnswerStyle actual = styleOf(action.answer, style);
    const bool separate = actual == AnswerStyle::Separate || outcome.answerDelayMs > 0;
    const bool answers = outcome.answer && action.answer != AnswerKind::AckOnly &&
                         (!separate || outcome.answerIsData);
    std::vector<AnswerRecord> records;
    if (separate || !answers) {
        const std::uint32_t status = action.ackStatus.value_or(PingPayload::Handled);
        records.push_back({acknowledgement(request, status), delayMs, true});
    }
    if (answers) {
        const std::uint32_t id = separate ? nextRequestId() : request.requestId;
        Record answer{request.id, !separate, id, *outcome.answer};
        spoil(answer, action.answer);
        records.push_back({std::move(answer), delayMs + outcome.answerDelayMs, false});
    }
    return records;
}

}  // namespace simulator
