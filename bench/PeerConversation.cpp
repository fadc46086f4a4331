#include "PeerConversation.h"

#include <algorithm>
#include <cstdlib>

#include "BarePeer.h"
#include "Samples.h"
#include "wire/Payloads.h"

namespace barepeer {

namespace {

using simulator::CommandId;
using simulator::ConnectPayload;
using simulator::DirectCtrlPayload;
using simulator::ParamDataPayload;
using simulator::ParamInfoPayload;
using simulator::ReadTogetherPayload;
using simulator::Record;
using simulator::StaticParamPayload;

constexpr int pushIndex = 100;
constexpr int acknowledgedIndex = 101;
constexpr int arraysIndex = 102;
constexpr int firstReadOnly = 200;
/// Request ids of pushed values; all others of this peer have 0.
constexpr std::uint32_t valueId = 0x40000000;
constexpr double longestIdleUs = 1e6;

int indexOf(const std::string& name) {
    if (name == push) return pushIndex;
    if (name == acknowledged) return acknowledgedIndex;
    if (name == arrays) return arraysIndex;
    const int number = std::atoi(name.c_str() + 1);
    return name[0] == 'V' ? number : firstReadOnly + number;
}

std::string threeArraysPayload() {
    StaticParamPayload payload;
    payload.index = arraysIndex;
    payload.operation = StaticParamPayload::Read;
    for (int i = 0; i < perArray; ++i) {
        payload.first.push_back(i);
        payload.second.push_back(-i);
        payload.third.push_back(i / 7.0);
    }
    return payload.write();
}

}  // namespace

int Conversation::Plan::take(int unacknowledged) {
    if (window > 0) return std::max(window - unacknowledged, 0);
    if (!isPaced() || nowUs() < nextUs) return 0;
    nextUs = std::max(nextUs + periodUs, nowUs() - periodUs);
    return burst;
}

Conversation::Conversation(Way& way, int window) : way_(way), threeArrays_(threeArraysPayload()) {
    plan_.window = window;
}

void Conversation::pushDue() {
    for (int due = plan_.take(unacknowledged_); due > 0; --due) {
        const std::string payload = ParamDataPayload{next_, nowUs()}.write();
        next_ = (next_ + 1) % streamed;
        ++unacknowledged_;
        if (way_.send({CommandId::ReceiveParamData, false, valueId, payload})) countReply();
    }
}

double Conversation::idleUs() const {
    return plan_.isPaced() ? std::clamp(plan_.nextUs - nowUs(), 0.0, longestIdleUs) : longestIdleUs;
}

void Conversation::handle(const Record& record) {
    if (record.isReply) {
        if (record.requestId == valueId) countReply();
        return;
    }
    switch (record.id) {
        case CommandId::KwpConnect:
            way_.acknowledge(record);
            if (ConnectPayload::read(record.payload).mode == ConnectPayload::Query)
                way_.send({CommandId::ReceiveParamData, false, 0,
                           ParamDataPayload{ParamDataPayload::Online, 1.0}.write()});
            return;
        case CommandId::GetParamInfo:
            return describe(record);
        case CommandId::DirectCtrl:
            return control(record);
        case CommandId::StaticParam:
            return answer(record, threeArrays_);
        case CommandId::ReadTogether:
            return readTogether(record);
        default:
            way_.acknowledge(record);
    }
}

void Conversation::countReply() {
    --unacknowledged_;
    ++acknowledgedValues_;
}

void Conversation::describe(const Record& record) {
    ParamInfoPayload info = ParamInfoPayload::read(record.payload);
    info.index = indexOf(info.name);
    info.threeArrays = info.index == arraysIndex;
    answer(record, info.write());
}

void Conversation::control(const Record& record) {
    DirectCtrlPayload control = DirectCtrlPayload::read(record.payload);
    const bool isRead = control.operation == DirectCtrlPayload::Read;
    if (control.index == pushIndex && !isRead) startPlan(control.values);
    if (!isRead) return way_.acknowledge(record);
    control.values = {static_cast<double>(acknowledgedValues_), nowUs()};
    answer(record, control.write());
}

/// Whoever asks for the same again gets the same bytes.
void Conversation::readTogether(const Record& record) {
    if (record.payload != togetherAsked_) {
        ReadTogetherPayload together = ReadTogetherPayload::read(record.payload);
        together.values.clear();
        for (const std::uint32_t index : together.indices)
            together.values.push_back({static_cast<double>(index)});
        togetherAnswer_ = together.write();
        togetherAsked_ = record.payload;
    }
    answer(record, togetherAnswer_);
}

void Conversation::startPlan(const std::vector<double>& values) {
    plan_.window = static_cast<int>(values.at(0));
    plan_.burst = static_cast<int>(values.at(1));
    plan_.periodUs = values.at(2);
    plan_.nextUs = nowUs();
}

void Conversation::answer(const Record& record, const std::string& payload) {
    way_.send({record.id, true, record.requestId, payload});
}

}  // namespace barepeer
