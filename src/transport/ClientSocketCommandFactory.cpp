#include "transport/ClientSocketCommandFactory.h"

#include <cstdio>
#include <stdexcept>
#include <utility>

#include "common/Deadline.h"
#include "common/LastError.h"
#include "framework/AsyncSocket.h"
#include "transport/RecordBound.h"
#include "transport/ResultQueues.h"
#include "transport/SocketWorker.h"

namespace {

constexpr unsigned int outgoingSlots = 10;
constexpr unsigned int defaultTimeoutMs = 2000;
constexpr int stopPolls = 100;
constexpr unsigned int stopPollMs = 50;
/// So often a sender that waits sees whether the worker is still there.
constexpr unsigned int lookMs = 10;

/// The socket support of the process while the worker runs.
class SocketSupport {
public:
    SocketSupport() : started_(AfxSocketInit() != FALSE) {
        if (!started_) std::printf("Failed to Initialize Sockets\n");
    }
    ~SocketSupport() {
        if (started_) AfxSocketTerm();
    }
    SocketSupport(const SocketSupport&) = delete;
    SocketSupport& operator=(const SocketSupport&) = delete;

private:
    const bool started_;
};

}  // namespace

ClientSocketCommandFactory::ClientSocketCommandFactory(std::string serverIp, unsigned int port,
                                                       ICommandReceiver& receiver)
    : receiver_(receiver),
      serverAddress_(std::move(serverIp)),
      serverPort_(port),
      outgoing_(outgoingSlots) {}

ClientSocketCommandFactory::~ClientSocketCommandFactory() {
    ClientSocketCommandFactory::stop();
}

void ClientSocketCommandFactory::start() {
    if (!worker_.start(workerThread, this))
        throw std::runtime_error("Unable to start External Operating socket thread, " +
                                 common::lastErrorText());
}

bool ClientSocketCommandFactory::stop() {
    if (!worker_.hasHandle()) return stopped_;
    stop_ = true;
    common::sleepMs(stopPollMs);
    // To the very end of the thread, so that it has let go of this module, too. Of one whose state
    // cannot be read nobody knows that it has ended.
    const auto hasEnded = [this] { return worker_.state() == common::ThreadState::ended; };
    stopped_ = hasEnded();
    for (int poll = 0; poll < stopPolls && !stopped_; ++poll) {
        common::sleepMs(stopPollMs);
        stopped_ = hasEnded();
    }
    worker_.close();
    return stopped_;
}

unsigned __stdcall ClientSocketCommandFactory::workerThread(void* factory) {
    auto& self = *static_cast<ClientSocketCommandFactory*>(factory);
    const SocketSupport support;
    try {
        SocketWorker worker(self);
        self.running_ = &worker;
        self.workerThread_ = common::currentThreadId();
        while (!self.stop_) worker.runOnce();
    } catch (...) {
        // Nothing may leave the thread. Without a worker every send fails by its time-out.
    }
    self.workerThread_ = 0;
    self.running_ = nullptr;
    self.stop_ = true;
    return 0;
}

bool ClientSocketCommandFactory::send(std::unique_ptr<IExternalCommand> command,
                                      unsigned int timeoutMs) {
    return sendIf(nullptr, std::move(command), timeoutMs) == Delivery::taken;
}

Delivery ClientSocketCommandFactory::sendIf(Permit permit,
                                            std::unique_ptr<IExternalCommand> command,
                                            unsigned int timeoutMs) {
    if (isTooLong(*command)) return Delivery::tooLong;
    if (common::currentThreadId() == workerThread_) {
        running_->sendNow(*command);
        return Delivery::taken;
    }
    if (timeoutMs == useDefault) timeoutMs = defaultTimeout(command->getId());
    CmdData data = makeData(*command, timeoutMs);
    command.reset();
    const bool isAwaited = timeoutMs != doNotWait;
    if (isAwaited) data.results = &resultQueueOfThisThread();
    if (isAwaited || permit != nullptr)
        data.departure = std::make_shared<Departure>(std::move(permit));
    if (isAwaited) return deliver(data);
    outgoing_.push(data);
    return Delivery::taken;
}

Delivery ClientSocketCommandFactory::deliver(const CmdData& command) {
    const bool wasConnected = isConnected_;
    outgoing_.push(command);
    const bool succeeded = awaitResult(command);
    command.departure->cancel();
    if (succeeded) return Delivery::taken;
    if (stop_) return Delivery::broken;
    const Delivery state = command.departure->state();
    const bool waitedForConnection = !wasConnected || !isConnected_;
    return state == Delivery::notBegun && waitedForConnection ? Delivery::noConnection : state;
}

ClientSocketCommandFactory::CmdData ClientSocketCommandFactory::makeData(
    const IExternalCommand& command, unsigned int timeoutMs) {
    CmdData data;
    data.requestId = dynamic_cast<const ExternalCommand&>(command).requestId();
    data.timeoutMs = timeoutMs;
    data.bytes = std::make_shared<std::string>();
    command.write(*data.bytes);
    return data;
}

bool ClientSocketCommandFactory::awaitResult(const CmdData& sent) {
    const auto deadline = common::Deadline::after(common::now(), sent.timeoutMs);
    for (;;) {
        CmdResult result;
        const bool isThere = sent.results->pop(result, deadline.sliceMs(lookMs));
        // A result with another id belongs to an earlier send that no longer waited for it.
        if (isThere && result.requestId == sent.requestId)
            return result.status == CmdResult::success;
        if (deadline.hasPassed() || stop_) return false;
    }
}

unsigned int ClientSocketCommandFactory::defaultTimeout(unsigned int) const {
    return defaultTimeoutMs;
}

void ClientSocketCommandFactory::onConnected(ConnInstance&) {
    received_.clear();
    if (wasConnected_) receiver_.onNewQor();
    wasConnected_ = true;
}

void ClientSocketCommandFactory::onData(ConnInstance& connection, const std::string& bytes) {
    connection.expect(received_.append(bytes));
}

void ClientSocketCommandFactory::onClosed(ConnInstance&) {}

bool ClientSocketCommandFactory::isStopping() const {
    return false;
}
