#include "facade/CmdData.h"
#include "facade/Posting.h"
#include "facade/QorControlFacade.h"
#include "facade/TimedCall.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;
using Impl = QorControlFacade::Impl;

namespace {

constexpr unsigned int untimedPollMs = 1;

/// Waits without a time limit, keeping the calling thread's windows alive, until the answer comes
/// or the agent thread has ended.
bool awaitPumping(Impl& impl, Impl::AnswerQueue& answers) {
    Impl::CmdResponse response;
    while (!answers.pop(response, untimedPollMs))
        if (!impl.protectedMessagePump()) return false;
    return response.result == Impl::CmdResponse::success;
}

/// Posts a request without a time limit; its answer comes into the queue that is returned.
std::shared_ptr<Impl::AnswerQueue> postUntimed(Impl& impl, std::uint32_t kind,
                                               std::shared_ptr<Impl::CmdData> request,
                                               IProgressMonitor* monitor) {
    Impl::ProtocolCmd command;
    command.kind = kind;
    command.data = std::move(request);
    command.replyQueue = std::make_shared<Impl::AnswerQueue>(1);
    command.monitor = monitor;
    impl.commandQueue.push(command);
    return command.replyQueue;
}

/// Sets the connecting flag to the end of the block.
class Connecting {
public:
    explicit Connecting(Impl& impl) : impl_(impl) { impl_.connecting = true; }
    ~Connecting() { impl_.connecting = false; }
    Connecting(const Connecting&) = delete;
    Connecting& operator=(const Connecting&) = delete;

private:
    Impl& impl_;
};

void logConnect(const Impl& impl, const QorControlFacade::EcuConnect& settings,
                QorControlFacade::EcuConnect::ConnType type) {
    trace(libraryModule, tracelog::information, 0,
          "Connecting type = %d, proto = %d, secdll = '%s'\n", type,
          static_cast<int>(settings.protocol), settings.securityDll.c_str());
    if (impl.eolLog == nullptr) return;
    impl.eolLog->info("CONNECT-type(%d): [%d %d %d %d %d 0x%08X 0x%08X %d %d %s]", type,
                      settings.protocol, settings.protocolOption, settings.kLineBaudRate,
                      settings.canBaudRate, settings.refreshPeriodMs, settings.canRequestId,
                      settings.canResponseId, static_cast<int>(settings.addressByte1),
                      static_cast<int>(settings.addressByte2), settings.securityDll.c_str());
}

}  // namespace

bool QorControlFacade::connect(const EcuConnect& settings, EcuConnect::ConnType type,
                               IProgressMonitor* monitor) const {
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    logConnect(*impl, settings, type);
    auto request = std::make_shared<Impl::CmdDataConnect>(settings, type);
    if (monitor == nullptr) return postOnly(*impl, Impl::kindConnect, std::move(request));
    const auto answers = postUntimed(*impl, Impl::kindConnect, std::move(request), monitor);
    const Connecting connecting(*impl);
    return awaitPumping(*impl, *answers);
}

bool QorControlFacade::setEcuSegment(const std::string& segment, bool flag,
                                     IProgressMonitor* monitor) const {
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    trace(libraryModule, tracelog::information, 0, "Setting segment = '%s' [%d]\n", segment.c_str(),
          flag);
    if (impl->eolLog != nullptr) impl->eolLog->info("SET-segment(%s): [%d]", segment.c_str(), flag);
    const auto answers =
        postUntimed(*impl, Impl::kindSetEcuSegment,
                    std::make_shared<Impl::CmdDataSegment>(segment, flag), monitor);
    return awaitPumping(*impl, *answers);
}

bool QorControlFacade::openModel(const ModelDescription& model) const {
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    trace(libraryModule, tracelog::information, 0, "Opening model = '%s', hex = '%s', csv = '%s'\n",
          model.model.c_str(), model.hex.c_str(), model.csv.c_str());
    if (impl->eolLog != nullptr)
        impl->eolLog->info("OPEN-model(%s): ['%s' '%s']", model.model.c_str(), model.hex.c_str(),
                           model.csv.c_str());
    return postOnly(*impl, Impl::kindOpenModel, std::make_shared<Impl::CmdDataModel>(model));
}

bool QorControlFacade::connectCanBus(const CanBusConnect& settings,
                                     EcuConnect::ConnType type) const {
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    return postOnly(*impl, Impl::kindConnectCanBus,
                    std::make_shared<Impl::CmdCanBusConn>(settings, type));
}

bool QorControlFacade::pingQor(unsigned int timeoutMs) const {
    static AnswerTable answers;
    const auto impl = impl_->shared_from_this();
    if (!impl->isOperating()) return false;
    TimedCall call(*impl, answers);
    if (call.run(Impl::kindPingQor, std::make_shared<Impl::CmdDataPing>(timeoutMs),
                 doubledWait(timeoutMs)))
        return true;
    trace(libraryModule, tracelog::warning, 0, "QorControlFacade::pingQor(), t: %d ms\n",
          call.elapsedMs());
    return false;
}
