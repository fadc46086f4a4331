#include <utility>

#include "facade/CmdData.h"
#include "facade/QorControlFacade.h"
#include "facade/Text.h"
#include "facade/TimedCall.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;
using Impl = QorControlFacade::Impl;

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

void logKwpRequest(const Impl& impl, const QorControlFacade::KwpCommand& kwp) {
    const std::string hex = hexOf(kwp.data);
    trace(libraryModule, tracelog::information, 0, "Sending KWP = 0x%02X [%s]\n", kwp.service,
          hex.c_str());
    if (impl.eolLog != nullptr)
        impl.eolLog->info("KWP-send(0x%02X): [%s]", kwp.service, hex.c_str());
}

void logKwpAnswer(const Impl& impl, const QorControlFacade::KwpCommand& kwp,
                  const TimedCall& call) {
    const std::string hex = hexOf(kwp.data);
    const char* const verdict = kwp.failed != 0 ? "Failed" : "OK";
    trace(libraryModule, tracelog::information, 0, "Answer on KWP = 0x%02X [%s], %s , t: %d ms\n",
          kwp.service, hex.c_str(), verdict, call.elapsedMs());
    if (impl.eolLog != nullptr)
        impl.eolLog->info("KWP-answer(0x%02X): [%s], %s", kwp.service, hex.c_str(), verdict);
}

void logKwpFailure(const Impl& impl, const QorControlFacade::KwpCommand& kwp,
                   const TimedCall& call) {
    trace(libraryModule, tracelog::warning, 0, "Failed on KWP = 0x%02X , t: %d ms\n", kwp.service,
          call.elapsedMs());
    if (impl.eolLog != nullptr)
        impl.eolLog->error("FAILED KWP-send(0x%02X), t: %d ms", kwp.service, call.elapsedMs());
}

void logCanFailure(const Impl& impl, const char* direction, const char* format,
                   const TimedCall& call) {
    trace(libraryModule, tracelog::warning, 0, "Failed on CanBus-%s, t: %d ms\n", direction,
          call.elapsedMs());
    if (impl.eolLog != nullptr) impl.eolLog->error(format, call.elapsedMs());
}

}  // namespace

bool QorControlFacade::clearDtc(unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    // The one budget that is not doubled; stations have set their time-outs by it.
    if (call.run(Impl::kindClearDtc, std::make_shared<Impl::CmdDataDtc>(), timeoutMs)) {
        trace(libraryModule, tracelog::information, 0, "OK on clear-dtc, t: %d ms\n",
              call.elapsedMs());
        return true;
    }
    trace(libraryModule, tracelog::warning, 0, "QorControlFacade::clearDtc() failed, t: %d ms\n",
          call.elapsedMs());
    return false;
}

bool QorControlFacade::getDtcByStatus(std::vector<DtcDescription>& dtcs,
                                      unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    const auto request = std::make_shared<Impl::CmdDataDtcData>(timeoutMs);
    if (auto* const answer = call.ask<Impl::CmdDataDtcData>(Impl::kindGetDtcByStatus, request,
                                                            doubledWait(timeoutMs))) {
        dtcs = std::move(answer->dtcs);
        trace(libraryModule, tracelog::information, 0, "OK on DTC by status [size=%d], t: %d ms\n",
              static_cast<int>(dtcs.size()), call.elapsedMs());
        return true;
    }
    trace(libraryModule, tracelog::warning, 0,
          "QorControlFacade::getDtcByStatus() failed, t: %d ms\n", call.elapsedMs());
    return false;
}

bool QorControlFacade::sendKwpCommand(KwpCommand& kwp, unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    // The request is on its way before its lines are written.
    call.post(Impl::kindSendKwpCommand, std::make_shared<Impl::CmdDataKwp>(timeoutMs, kwp));
    logKwpRequest(*impl, kwp);
    Impl::CmdDataKwp* answer = nullptr;
    if (call.await(doubledWait(timeoutMs))) answer = call.results<Impl::CmdDataKwp>();
    if (answer == nullptr) {
        logKwpFailure(*impl, kwp, call);
        return false;
    }
    kwp.data = std::move(answer->data);
    kwp.failed = static_cast<unsigned char>(answer->failed);
    logKwpAnswer(*impl, kwp, call);
    return true;
}

bool QorControlFacade::getCanBusData(CanBusData& data, unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    const auto request = std::make_shared<Impl::CmdCanBusData>(data, timeoutMs);
    auto* const answer =
        call.ask<Impl::CmdCanBusData>(Impl::kindGetCanBusData, request, doubledWait(timeoutMs));
    if (answer == nullptr) {
        logCanFailure(*impl, "get", "FAILED CanBus-get, t: %d ms", call);
        return false;
    }
    data = std::move(answer->data);
    trace(libraryModule, tracelog::information, 0, "Answer on CanBus-get [%s], t: %d ms\n",
          ofFrames(data).c_str(), call.elapsedMs());
    return true;
}

bool QorControlFacade::sendCanBusMsg(unsigned int first, unsigned int second,
                                     const std::string& message, unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    if (call.run(Impl::kindSendCanBusMsg,
                 std::make_shared<Impl::CmdCanBusSend>(first, second, message, timeoutMs),
                 doubledWait(timeoutMs)))
        return true;
    logCanFailure(*impl, "send", "FAILED CanBus-send, t: %d ms", call);
    return false;
}
