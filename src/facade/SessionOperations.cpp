#include <atomic>
#include <utility>

#include "facade/AwaitedCall.h"
#include "facade/FacadeImpl.h"
#include "facade/QorControlFacade.h"
#include "facade/Quietly.h"
#include "facade/TimedCall.h"
#include "facade/UntimedCall.h"
#include "qorcontrol/Waiting.h"
#include "trace/OneLine.h"
#include "trace/Trace.h"

using channel::Kind;
using tracelog::libraryModule;
using tracelog::oneLine;
using tracelog::trace;

namespace {

/// Sets the connecting flag to the end of the block.
class Connecting {
public:
    explicit Connecting(std::atomic<bool>& flag) : flag_(flag) { flag_ = true; }
    ~Connecting() { flag_ = false; }
    Connecting(const Connecting&) = delete;
    Connecting& operator=(const Connecting&) = delete;

private:
    std::atomic<bool>& flag_;
};

void logConnect(const Call& call, const QorControlFacade::EcuConnect& settings,
                QorControlFacade::EcuConnect::ConnType type) {
    trace(libraryModule, tracelog::information, 0,
          "Connecting type = %d, proto = %d, secdll = '%s'\n", type,
          static_cast<int>(settings.protocol), oneLine(settings.securityDll).c_str());
    if (call.eolLog() == nullptr) return;
    call.eolLog()->info("CONNECT-type(%d): [%d %d %d %d %d 0x%08X 0x%08X %d %d %s]", type,
                        settings.protocol, settings.protocolOption, settings.kLineBaudRate,
                        settings.canBaudRate, settings.refreshPeriodMs, settings.canRequestId,
                        settings.canResponseId, static_cast<int>(settings.addressByte1),
                        static_cast<int>(settings.addressByte2), settings.securityDll.c_str());
}

void logModel(const Call& call, const QorControlFacade::ModelDescription& model) {
    trace(libraryModule, tracelog::information, 0, "Opening model = '%s', hex = '%s', csv = '%s'\n",
          oneLine(model.model).c_str(), oneLine(model.hex).c_str(), oneLine(model.csv).c_str());
    if (call.eolLog() != nullptr)
        call.eolLog()->info("OPEN-model(%s): ['%s' '%s']", model.model.c_str(), model.hex.c_str(),
                            model.csv.c_str());
}

void logSegment(const Call& call, const std::string& segment, bool flag) {
    trace(libraryModule, tracelog::information, 0, "Setting segment = '%s' [%d]\n",
          oneLine(segment).c_str(), flag);
    if (call.eolLog() != nullptr)
        call.eolLog()->info("SET-segment(%s): [%d]", segment.c_str(), flag);
}

}  // namespace

bool QorControlFacade::connect(const EcuConnect& settings, EcuConnect::ConnType type,
                               IProgressMonitor* monitor) const {
    UntimedCall call(*impl_);
    if (!call.isOperating()) return false;
    logConnect(call, settings, type);
    if (monitor == nullptr) return call.postUnanswered<Kind::connect>(settings, type);
    call.post<Kind::connect>(monitor, settings, type);
    const Connecting connecting(call.connecting());
    return call.await();
}

bool quietly::connect(const FacadeState& state, const QorControlFacade::EcuConnect& settings,
                      QorControlFacade::EcuConnect::ConnType type,
                      std::shared_ptr<IProgressMonitor> monitor,
                      const std::function<bool()>& isWanted) {
    AwaitedCall call(state);
    if (!call.isOperating()) return false;
    logConnect(call, settings, type);
    return call.runWatched<Kind::connect>(std::move(monitor), isWanted, settings, type);
}

bool QorControlFacade::setEcuSegment(const std::string& segment, bool flag,
                                     IProgressMonitor* monitor) const {
    UntimedCall call(*impl_);
    if (!call.isOperating()) return false;
    logSegment(call, segment, flag);
    call.post<Kind::setEcuSegment>(monitor, segment, flag);
    return call.await();
}

bool quietly::setEcuSegment(const FacadeState& state, const std::string& segment, bool flag) {
    AwaitedCall call(state);
    if (!call.isOperating()) return false;
    logSegment(call, segment, flag);
    return call.run<Kind::setEcuSegment>(segment, flag);
}

bool QorControlFacade::openModel(const ModelDescription& model) const {
    Call call(*impl_);
    if (!call.isOperating()) return false;
    logModel(call, model);
    return call.postUnanswered<Kind::openModel>(model);
}

bool qorcontrol::openModelAndWait(const QorControlFacade& facade,
                                  const QorControlFacade::ModelDescription& model) {
    AwaitedCall call(FacadeAccess::stateOf(facade));
    if (!call.isOperating()) return false;
    logModel(call, model);
    return call.run<Kind::openModel>(model);
}

bool QorControlFacade::connectCanBus(const CanBusConnect& settings,
                                     EcuConnect::ConnType type) const {
    return postOnly<Kind::connectCanBus>(*impl_, settings, type);
}

bool qorcontrol::connectCanBusAndWait(const QorControlFacade& facade,
                                      const QorControlFacade::CanBusConnect& settings,
                                      QorControlFacade::EcuConnect::ConnType type) {
    AwaitedCall call(FacadeAccess::stateOf(facade));
    return call.isOperating() && call.run<Kind::connectCanBus>(settings, type);
}

bool QorControlFacade::pingQor(unsigned int timeoutMs) const {
    TimedCall<Kind::pingQor> call(*impl_, timeoutMs);
    if (call.run(timeoutMs)) return true;
    if (call.hasFailed())
        trace(libraryModule, tracelog::warning, 0, "QorControlFacade::pingQor(), t: %d ms\n",
              call.elapsedMs());
    return false;
}
