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

bool QorProtocolAgent::clearDtc(const Request<channel::CmdDataDtc>& request) {
    return client_->clearDtc() && request.succeed();
}

bool QorProtocolAgent::readDtc(const Request<channel::CmdDataDtcData>& request) {
    std::vector<protocol::DtcRecord> dtcs;
    if (!client_->getDtc(request->statusMask, dtcs, request->statusMask)) return false;
    auto results = std::make_shared<channel::CmdDataDtcData>(request->statusMask);
    results->dtcs = toDescriptions(std::move(dtcs));
    return request.succeed(std::move(results));
}

bool QorProtocolAgent::sendKwp(const Request<channel::CmdDataKwp>& request) {
    protocol::ExecKwp record;
    record.service = request->service;
    record.data = request->data;
    record.timeoutMs = request->timeoutMs;
    record.failed = request->failed != 0;
    protocol::ExecKwp result;
    if (!client_->execKwp(record, result)) return false;
    auto results = std::make_shared<channel::CmdDataKwp>(*request);
    results->data = std::move(result.data);
    results->failed = result.failed;
    return request.succeed(std::move(results));
}

bool QorProtocolAgent::connectCanBus(const Request<channel::CmdCanBusConn>& request) {
    protocol::CanBusConnect record;
    record.busMode = request->type == EcuConnect::Alternative ? 1 : 0;
    record.busParam = request->settings.busParam;
    record.firstFlag = request->settings.firstFlag;
    record.secondFlag = request->settings.secondFlag;
    return client_->connectCanBus(record) && request.succeed();
}

bool QorProtocolAgent::readCanBus(const Request<channel::CmdCanBusData>& request) {
    std::vector<protocol::CanBusItem> wanted;
    for (const auto& item : request->data.items) wanted.push_back({item.canId, item.value});
    std::vector<protocol::CanBusItem> frames;
    if (!client_->getCanBusData(wanted, frames, request->timeoutMs)) return false;
    QorControlFacade::CanBusData data;
    for (const auto& frame : frames) data.items.push_back({frame.canId, frame.value});
    return request.succeed(
        std::make_shared<channel::CmdCanBusData>(std::move(data), request->timeoutMs));
}

bool QorProtocolAgent::sendCanBus(const Request<channel::CmdCanBusSend>& request) {
    return client_->sendCanBusMsg({request->first, request->second, request->message},
                                  request->timeoutMs) &&
           request.succeed();
}
