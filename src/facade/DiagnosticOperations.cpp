#include <utility>

#include "facade/FacadeImpl.h"
#include "facade/QorControlFacade.h"
#include "facade/Text.h"
#include "facade/TimedCall.h"
#include "trace/Trace.h"

using channel::Kind;
using tracelog::libraryModule;
using tracelog::trace;

namespace {

std::string hexOf(const std::string& bytes) {
    std::string hex;
    for (const char byte : bytes)
        hex += text::piece<8>("%02X ", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
    return hex;
}

std::string ofFrames(const QorControlFacade::CanBusData& data) {
    std::string joined;
    for (const auto& item : data.items) {
        if (text::fillsLine(joined)) break;
        joined += text::piece<32>("%08X : %d , ", item.canId, item.value);
    }
    return joined;
}

void logKwpRequest(const Call& call, const QorControlFacade::KwpCommand& kwp) {
    const std::string hex = hexOf(kwp.data);
    trace(libraryModule, tracelog::information, 0, "Sending KWP = 0x%02X [%s]\n", kwp.service,
          hex.c_str());
    if (call.eolLog() != nullptr)
        call.eolLog()->info("KWP-send(0x%02X): [%s]", kwp.service, hex.c_str());
}

void logKwpAnswer(const TimedCallBase& call, const QorControlFacade::KwpCommand& kwp) {
    const std::string hex = hexOf(kwp.data);
    const char* const verdict = kwp.failed != 0 ? "Failed" : "OK";
    trace(libraryModule, tracelog::information, 0, "Answer on KWP = 0x%02X [%s], %s , t: %d ms\n",
          kwp.service, hex.c_str(), verdict, call.elapsedMs());
    if (call.eolLog() != nullptr)
        call.eolLog()->info("KWP-answer(0x%02X): [%s], %s", kwp.service, hex.c_str(), verdict);
}

void logKwpFailure(const TimedCallBase& call, const QorControlFacade::KwpCommand& kwp) {
    trace(libraryModule, tracelog::warning, 0, "Failed on KWP = 0x%02X , t: %d ms\n", kwp.service,
          call.elapsedMs());
    if (call.eolLog() != nullptr)
        call.eolLog()->error("FAILED KWP-send(0x%02X), t: %d ms", kwp.service, call.elapsedMs());
}

void logCanFailure(const TimedCallBase& call, const char* direction, const char* format) {
    trace(libraryModule, tracelog::warning, 0, "Failed on CanBus-%s, t: %d ms\n", direction,
          call.elapsedMs());
    if (call.eolLog() != nullptr) call.eolLog()->error(format, call.elapsedMs());
}

/// "QorControlFacade::<operation>() failed, ..." in the trace.
void traceFailure(const TimedCallBase& call) {
    trace(libraryModule, tracelog::warning, 0, "QorControlFacade::%s() failed, t: %d ms\n",
          call.name(), call.elapsedMs());
}

}  // namespace

bool QorControlFacade::clearDtc(unsigned int timeoutMs) const {
    TimedCall<Kind::clearDtc> call(*impl_, timeoutMs);
    if (call.run()) {
        trace(libraryModule, tracelog::information, 0, "OK on clear-dtc, t: %d ms\n",
              call.elapsedMs());
        return true;
    }
    if (call.hasFailed()) traceFailure(call);
    return false;
}

bool QorControlFacade::getDtcByStatus(std::vector<DtcDescription>& dtcs,
                                      unsigned int timeoutMs) const {
    TimedCall<Kind::getDtcByStatus> call(*impl_, timeoutMs);
    if (auto* const answer = call.ask(timeoutMs)) {
        dtcs = std::move(answer->dtcs);
        trace(libraryModule, tracelog::information, 0, "OK on DTC by status [size=%d], t: %d ms\n",
              static_cast<int>(dtcs.size()), call.elapsedMs());
        return true;
    }
    if (call.hasFailed()) traceFailure(call);
    return false;
}

bool QorControlFacade::sendKwpCommand(KwpCommand& kwp, unsigned int timeoutMs) const {
    TimedCall<Kind::sendKwpCommand> call(*impl_, timeoutMs);
    if (!call.post(timeoutMs, kwp)) return false;
    logKwpRequest(call, kwp);  // the request is on its way before its lines are written
    auto* const answer = call.await();
    if (answer == nullptr) {
        logKwpFailure(call, kwp);
        return false;
    }
    kwp.data = std::move(answer->data);
    kwp.failed = static_cast<unsigned char>(answer->failed);
    logKwpAnswer(call, kwp);
    return true;
}

bool QorControlFacade::getCanBusData(CanBusData& data, unsigned int timeoutMs) const {
    TimedCall<Kind::getCanBusData> call(*impl_, timeoutMs);
    if (auto* const answer = call.ask(data, timeoutMs)) {
        data = std::move(answer->data);
        trace(libraryModule, tracelog::information, 0, "Answer on CanBus-get [%s], t: %d ms\n",
              ofFrames(data).c_str(), call.elapsedMs());
        return true;
    }
    if (call.hasFailed()) logCanFailure(call, "get", "FAILED CanBus-get, t: %d ms");
    return false;
}

bool QorControlFacade::sendCanBusMsg(unsigned int first, unsigned int second,
                                     const std::string& message, unsigned int timeoutMs) const {
    TimedCall<Kind::sendCanBusMsg> call(*impl_, timeoutMs);
    if (call.run(first, second, message, timeoutMs)) return true;
    if (call.hasFailed()) logCanFailure(call, "send", "FAILED CanBus-send, t: %d ms");
    return false;
}
