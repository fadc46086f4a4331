#include "transport/ExternalCommandFactory.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include "common/LastError.h"
#include "common/Pump.h"
#include "protocol/RecordHead.h"
#include "protocol/RecordStream.h"
#include "transport/ReceivedCommand.h"
#include "transport/RecordBound.h"

namespace {

constexpr unsigned int defaultTimeoutMs = 2000;

class Counted {
public:
    explicit Counted(unsigned int& count) : count_(count) { ++count_; }
    ~Counted() { --count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    unsigned int& count_;
};

}  // namespace

/// Answers one received command.
class ExternalCommandFactory::CommandReplyer final : public IExternalCommand::ICommandReplyer {
public:
    CommandReplyer(ExternalCommandFactory& factory, const ExternalCommand& received)
        : factory_(factory), received_(received) {}

    bool reply(std::unique_ptr<IExternalCommand> answer, unsigned int timeoutMs) override {
        factory_.releaseHeldSender();
        if (!answer) return true;
        dynamic_cast<ExternalCommand&>(*answer).stampAsReplyTo(received_.requestId());
        return factory_.send(std::move(answer), timeoutMs);
    }

private:
    ExternalCommandFactory& factory_;
    const ExternalCommand& received_;
};

ExternalCommandFactory::ExternalCommandFactory(const std::string& clientWindowName,
                                               std::string serverWindowName,
                                               ICommandReceiver& receiver,
                                               std::unique_ptr<IWindowPlatform> platform)
    : window_(std::make_unique<ExternalOperatingWnd>(*this)),
      serverWindowName_(std::move(serverWindowName)),
      receiver_(receiver),
      platform_(std::move(platform)) {
    if (!window_->create(clientWindowName.c_str()))
        throw std::runtime_error("Unable to create External Operating CWnd (" + clientWindowName +
                                 ")");
}

ExternalCommandFactory::~ExternalCommandFactory() = default;

bool ExternalCommandFactory::send(std::unique_ptr<IExternalCommand> command,
                                  unsigned int timeoutMs) {
    return sendIf(nullptr, std::move(command), timeoutMs) == Delivery::taken;
}

Delivery ExternalCommandFactory::sendIf(Permit permit, std::unique_ptr<IExternalCommand> command,
                                        unsigned int timeoutMs) {
    releaseHeldSender();
    if (isTooLong(*command)) return Delivery::tooLong;
    if (findServer() == nullptr) return Delivery::noConnection;
    if (permit != nullptr && !permit()) return Delivery::withdrawn;
    if (timeoutMs == useDefault) timeoutMs = defaultTimeout(command->getId());
    std::string bytes;
    command->write(bytes);
    return deliver(bytes, timeoutMs);
}

Delivery ExternalCommandFactory::deliver(const std::string& bytes, unsigned int timeoutMs) {
    const unsigned int flags =
        timeoutMs <= abortIfHungMs ? SMTO_BLOCK | SMTO_ABORTIFHUNG : SMTO_BLOCK;
    unsigned long result = 0;
    const Peer asked = peer_;  // which may change meanwhile
    const MessageEnd end =
        platform_->sendCopyData(asked.window, messageTag, bytes, flags, timeoutMs, result);
    if (end == MessageEnd::handled) return result != 0 ? Delivery::taken : Delivery::refused;
    // First of all: a system may call it forbidden when the window has gone with the message.
    if (end == MessageEnd::gone || platform_->processOf(asked.window) != asked.process)
        return Delivery::lost;
    if (end == MessageEnd::forbidden) return Delivery::forbidden;
    return end == MessageEnd::hung ? Delivery::hung : Delivery::silent;
}

bool ExternalCommandFactory::isPeerGone() {
    return peer_.window != nullptr && platform_->processOf(peer_.window) != peer_.process;
}

void ExternalCommandFactory::awaitInput(common::Event&, unsigned int timeoutMs) {
    common::awaitSentMessage(timeoutMs);
}

HWND ExternalCommandFactory::findServer() {
    const HWND server = platform_->findWindow(serverWindowName_);
    if (server == nullptr) return nullptr;
    const Peer found{server, platform_->processOf(server)};
    if (found.process == 0) return nullptr;  // it has just gone
    const bool isAnother = found.window != peer_.window || found.process != peer_.process;
    if (isAnother && peer_.window != nullptr) receiver_.onNewQor();
    peer_ = found;
    return server;
}

void ExternalCommandFactory::lookAfterPeer() {
    // A message does not tell whose it is: that the known window is gone must do.
    if (!isPeerGone()) return;
    peer_ = Peer();
    receiver_.onNewQor();
}

void ExternalCommandFactory::releaseHeldSender() {
    // Outside of a handler there is nobody to release. Wine says otherwise after a message that
    // did not fit on this thread's stack and so reached no handler; to release its sender would
    // tell it that the message was taken.
    if (handling_ != 0 && platform_->holdsSender()) platform_->releaseSender(1);
}

unsigned int ExternalCommandFactory::defaultTimeout(unsigned int) const {
    return defaultTimeoutMs;
}

bool ExternalCommandFactory::onCopyData(const COPYDATASTRUCT* record) {
    const common::KeptLastError ofTheSend;  // that may be waiting below, for its own answer
    const Counted inHandler(handling_);
    if (record == nullptr || record->dwData != messageTag) return false;
    if (record->lpData == nullptr || record->cbData > protocol::maxRecordBytes) return false;
    try {
        lookAfterPeer();
        return handleBytes(std::string(static_cast<const char*>(record->lpData), record->cbData));
    } catch (const std::bad_alloc&) {
        // Nothing must leave through the system's dispatching. The head alone needs no memory.
        const std::size_t headBytes =
            std::min<std::size_t>(record->cbData, protocol::RecordHead::encodedBytes);
        tellUnreadable({nullptr, false, true},
                       std::string(static_cast<const char*>(record->lpData), headBytes), receiver_);
        return false;
    }
}

bool ExternalCommandFactory::handleBytes(const std::string& bytes) {
    const ReceivedCommand received = recognise(bytes, receiver_.prototypes(), pingPrototype_);
    if (!received.command) {
        tellUnreadable(received, bytes, receiver_);
        return false;
    }
    if (received.isPing) return true;
    auto& command = static_cast<ExternalCommand&>(*received.command);
    CommandReplyer replyer(*this, command);
    return receiver_.handleCommand(command, replyer);
}
