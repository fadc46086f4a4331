#include "agent/Answering.h"
#include "agent/DtcConversion.h"
#include "agent/QorProtocolAgent.h"

using EcuConnect = QorControlFacade::EcuConnect;

std::vector<QorControlFacade::DtcDescription> toDescriptions(
    std::vector<protocol::DtcRecord> records) {
    std::vector<QorControlFacade::DtcDescription> descriptions;
    descriptions.reserve(records.size());
    for (protocol::DtcRecord& record : records)
        descriptions.push_back({record.code, record.status, std::move(record.text1),
                                std::move(record.text2), std::move(record.text3),
                                std::move(record.text4)});
    return descriptions;
}

bool QorProtocolAgent::clearDtc(const Impl::ProtocolCmd& command) {
    return payloadOf<Impl::CmdDataDtc>(command) != nullptr && client_->clearDtc() &&
           answer(command);
}

bool QorProtocolAgent::readDtc(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdDataDtcData>(command);
    if (request == nullptr) return false;
    std::vector<protocol::DtcRecord> dtcs;
    if (!client_->getDtc(request->statusMask, dtcs, request->statusMask)) return false;
    auto results = std::make_shared<Impl::CmdDataDtcData>(request->statusMask);
    results->dtcs = toDescriptions(std::move(dtcs));
    return answer(command, std::move(results));
}

bool QorProtocolAgent::sendKwp(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdDataKwp>(command);
    if (request == nullptr) return false;
    protocol::ExecKwp record;
    record.service = request->service;
    record.data = request->data;
    record.timeoutMs = request->timeoutMs;
    record.failed = request->failed != 0;
    protocol::ExecKwp result;
    if (!client_->execKwp(record, result)) return false;
    auto results = std::make_shared<Impl::CmdDataKwp>(*request);
    results->data = std::move(result.data);
    results->failed = result.failed;
    return answer(command, std::move(results));
}

bool QorProtocolAgent::connectCanBus(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdCanBusConn>(command);
    if (request == nullptr) return false;
    protocol::CanBusConnect record;
    record.busMode = request->type == EcuConnect::Alternative ? 1 : 0;
    record.busParam = request->settings.busParam;
    record.firstFlag = request->settings.firstFlag;
    record.secondFlag = request->settings.secondFlag;
    return client_->connectCanBus(record) && answer(command);
}

bool QorProtocolAgent::readCanBus(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdCanBusData>(command);
    if (request == nullptr) return false;
    std::vector<protocol::CanBusItem> wanted;
    for (const auto& item : request->data.items) wanted.push_back({item.canId, item.value});
    std::vector<protocol::CanBusItem> frames;
    if (!client_->getCanBusData(wanted, frames, request->timeoutMs)) return false;
    QorControlFacade::CanBusData data;
    for (const auto& frame : frames) data.items.push_back({frame.canId, frame.value});
    return answer(command,
                  std::make_shared<Impl::CmdCanBusData>(std::move(data), request->timeoutMs));
}

bool QorProtocolAgent::sendCanBus(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdCanBusSend>(command);
    return request != nullptr &&
           client_->sendCanBusMsg({request->first, request->second, request->message},
                                  request->timeoutMs) &&
           answer(command);
}
