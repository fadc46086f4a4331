#include "agent/QorProtocolAgent.h"

#include <stdexcept>
#include <string>
#include <utility>

#include "agent/DeskMessageBox.h"
#include "client/SystemMessageBox.h"
#include "common/Clock.h"
#include "common/Paths.h"
#include "common/Pump.h"

namespace {

constexpr unsigned int launchMs = 10000;
constexpr unsigned int afterLaunchMs = 100;
constexpr unsigned int requestWaitMs = 1;

}  // namespace

QorProtocolAgent::QorProtocolAgent(std::shared_ptr<Channel> channel)
    : channel_(std::move(channel)) {}

QorProtocolAgent::QorProtocolAgent(std::shared_ptr<Channel> channel,
                                   std::unique_ptr<ClientExternalOperating> client)
    : channel_(std::move(channel)), client_(client.release()) {}

void QorProtocolAgent::start() {
    const std::string& given = channel_->settingsPath;
    const std::string resolved = common::resolveAgainstExecutable(given);
    // A path that cannot be resolved cannot be read either; the complaint then names it as given.
    auto messageBox =
        std::make_unique<DeskMessageBox>(channel_, std::make_unique<SystemMessageBox>());
    client_.reset(
        ClientExternalOperating::create(resolved.empty() ? given : resolved, std::move(messageBox))
            .release());
    channel_->executable.publish(client_->executablePath());
    if (!client_->launch(launchMs)) failToLaunch();
    common::sleepMs(afterLaunchMs);
}

void QorProtocolAgent::failToLaunch() {
    const char* const what = "Fail to launch QOR external operating";
    // Whoever asks is told more than the trace, whose line is that of old.
    const std::string reason = what + (": " + client_->launchFailure());
    channel_->agent.noteEnd(qorcontrol::Cause::agentEnded, reason.c_str(),
                            client_->verdict().check);
    throw std::runtime_error(what);
}

void QorProtocolAgent::step() {
    noteEpoch();
    noteOnlineState();
    common::pumpCopyData();
    channel::ProtocolCmd command;
    const bool isAsked = channel_->commandQueue.pop(command, requestWaitMs);
    client_->setNoDelay(channel_->isTcpNoDelay);
    if (!isAsked) {
        channel_->backlog.noteEmpty();
        streamParams();
        streamDtcs();
        return;
    }
    channel_->backlog.noteTaken(command.number);
    carryOut(command);
}

void QorProtocolAgent::carryOut(const channel::ProtocolCmd& command) {
    // Its caller was told that it failed; carried out now, it would be a surprise.
    if (command.replyQueue != nullptr && command.replyQueue->isGivenUp()) return;
    client_->beginRequest(command.replyQueue);
    const bool succeeded = handle(command);
    client_->endRequest();
    if (!succeeded && command.replyQueue != nullptr)
        command.replyQueue->push({channel::CmdResponse::failure, nullptr, client_->verdict()});
}

void QorProtocolAgent::noteOnlineState() {
    if (!client_->isEcuOnline()) return;
    isQorNew_ = false;
    channel_->contact.note(common::now());
}

void QorProtocolAgent::noteEpoch() {
    const Epoch epoch = client_->epoch();
    if (epoch == epoch_) return;
    epoch_ = epoch;
    isQorNew_ = true;
    channel_->values.beginAnew();
}

bool QorProtocolAgent::handle(const channel::ProtocolCmd& command) {
    switch (command.kind) {
#define QOR_ROUTE(number, name, payload, wait, handler) \
    case channel::Kind::name:                           \
        return pass(command, &QorProtocolAgent::handler);
        QOR_OPERATIONS(QOR_ROUTE)
#undef QOR_ROUTE
    }
    return false;  // no such kind
}

template <class Data>
bool QorProtocolAgent::pass(const channel::ProtocolCmd& command, Handler<Data> handler) {
    auto* const data = dynamic_cast<Data*>(command.data.get());
    return data != nullptr && (this->*handler)(Request<Data>(command, *data, client_->verdict()));
}

void QorProtocolAgent::finish() {
    if (channel_->executable.get().empty()) return;
    client_->disconnectEcu();
    client_->shutdown(true, true);
}
