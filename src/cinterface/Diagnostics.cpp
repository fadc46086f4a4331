// Trouble codes, KWP and the CAN bus.

#include <utility>

#include "cinterface/Arguments.h"
#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"
#include "cinterface/TroubleCodes.h"

using cinterface::arrayOf;
using cinterface::bytesOf;
using cinterface::callOn;
using cinterface::Cause;
using cinterface::OutBuffer;
using cinterface::Outcome;
using cinterface::outcomeOf;
using cinterface::Result;
using cinterface::Session;
using cinterface::timeOutOf;
using cinterface::with;

int QOR_CALL QorClearDtc(QorHandle handle, unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        return outcomeOf(session.facade().clearDtc(timeOutOf(timeoutMs)));
    });
}

int QOR_CALL QorGetDtcByStatus(QorHandle handle, unsigned int timeoutMs, QorDtc* dtcs,
                               unsigned int capacity, unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<QorDtc> out(dtcs, capacity, needed, "dtcs");
        std::vector<QorControlFacade::DtcDescription> codes;
        Outcome outcome = outcomeOf(session.facade().getDtcByStatus(codes, timeOutOf(timeoutMs)));
        if (outcome.cause != Cause::none) return outcome;
        return with(outcome, out.put(*session.keep(cinterface::resultOf(std::move(codes)))->dtcs));
    });
}

int QOR_CALL QorSendKwpCommand(QorHandle handle, unsigned int service, const unsigned char* data,
                               unsigned int dataBytes, unsigned int timeoutMs,
                               unsigned char* answer, unsigned int capacity, unsigned int* needed,
                               int* failed) {
    return callOn(handle, [&](Session& session) {
        const cinterface::OutBytes out(answer, capacity, needed, "answer");
        QorControlFacade::KwpCommand kwp = {service, bytesOf(data, dataBytes, "data"), 0};
        Outcome outcome = outcomeOf(session.facade().sendKwpCommand(kwp, timeOutOf(timeoutMs)));
        if (outcome.cause != Cause::none) return outcome;
        if (failed != nullptr) *failed = kwp.failed;
        Result result;
        result.bytes = std::move(kwp.data);
        return with(outcome, out.put(*session.keep(std::move(result))->bytes));
    });
}

int QOR_CALL QorGetCanBusData(QorHandle handle, const QorCanBusItem* wanted,
                              unsigned int wantedCount, unsigned int timeoutMs,
                              QorCanBusItem* items, unsigned int capacity, unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<QorCanBusItem> out(items, capacity, needed, "items");
        QorControlFacade::CanBusData data;
        for (const QorCanBusItem& item : arrayOf(wanted, wantedCount, "wanted"))
            data.items.push_back({item.canId, item.value});
        Outcome outcome = outcomeOf(session.facade().getCanBusData(data, timeOutOf(timeoutMs)));
        if (outcome.cause != Cause::none) return outcome;
        Result result;
        result.items.emplace();
        for (const auto& item : data.items) result.items->push_back({item.canId, item.value});
        return with(outcome, out.put(*session.keep(std::move(result))->items));
    });
}

int QOR_CALL QorSendCanBusMsg(QorHandle handle, unsigned int first, unsigned int second,
                              const unsigned char* message, unsigned int messageBytes,
                              unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        return outcomeOf(session.facade().sendCanBusMsg(
            first, second, bytesOf(message, messageBytes, "message"), timeOutOf(timeoutMs)));
    });
}
