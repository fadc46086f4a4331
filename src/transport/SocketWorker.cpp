#include "transport/SocketWorker.h"

#include <new>
#include <string_view>
#include <utility>

#include "protocol/RecordHead.h"
#include "protocol/RecordStream.h"
#include "transport/SocketCommandReplyer.h"
#include "transport/SocketPump.h"

using protocol::RecordHead;

namespace {

bool isPing(const RecordHead& head) {
    return (head.header & ExternalCommand::idMask) == CommandPing::id;
}

/// Of a whole ping at the head of `bytes`.
std::uint32_t statusOf(std::string_view bytes, const RecordHead& head) {
    protocol::Ping ping;
    wire::Reader(bytes.substr(RecordHead::encodedBytes, head.payloadLength)).get(ping);
    return ping.status;
}

constexpr unsigned int connectMs = 1000;
/// An acknowledgement waits for at most as many others as take a few milliseconds to make.
constexpr std::size_t maxHeldBytes = 16 * 16;

}  // namespace

SocketWorker::SocketWorker(ClientSocketCommandFactory& factory)
    : factory_(factory), connection_(factory.serverAddress_, factory.serverPort_, factory) {}

void SocketWorker::runOnce() {
    try {
        work();
    } catch (const std::bad_alloc&) {
        acknowledgements_.clear();
        abandon();
    }
}

void SocketWorker::work() {
    handleReceived();
    noteConnection();
    pending_.failExpired();
    connection_.keepNoDelay(factory_.noDelay_);
    connection_.ensureConnected(connectMs);
    factory_.isConnected_ = connection_.isConnected();
    sendNextCommand();
    pumpSocketNotifications(&factory_.outgoing_.pushed());
}

void SocketWorker::abandon() {
    factory_.received_.clear();
    connection_.abandon();
}

void SocketWorker::noteConnection() {
    const bool isConnected = connection_.isConnected();
    factory_.isConnected_ = isConnected;
    if (!isConnected) pending_.noteConnectionLost();
}

void SocketWorker::sendNow(const IExternalCommand& command) {
    sendAcknowledgements();
    if (!connection_.isConnected()) return;
    std::string bytes;
    command.write(bytes);
    connection_.send(std::move(bytes));
}

void SocketWorker::acknowledge(const IExternalCommand& ping) {
    std::string bytes;
    ping.write(bytes);
    acknowledgements_ += bytes;
    if (acknowledgements_.size() >= maxHeldBytes) sendAcknowledgements();
}

void SocketWorker::sendAcknowledgements() {
    if (acknowledgements_.empty()) return;
    std::string bytes;
    bytes.swap(acknowledgements_);
    if (!connection_.isConnected()) return;
    try {
        connection_.send(std::move(bytes));
    } catch (const std::bad_alloc&) {
        connection_.abandon();  // QOR would miss some of them
        throw;
    }
}

void SocketWorker::handleReceived() {
    if (factory_.received_.hasOverrun()) {
        abandon();
        return;
    }
    std::string bytes = factory_.received_.takeAll();
    if (bytes.empty()) return;
    const std::size_t handled = handleRecords(bytes);
    sendAcknowledgements();
    // What is left must not keep the memory of a long record: swapped, for a short text that is
    // assigned goes into the room that is there.
    if (handled != 0) bytes.substr(handled).swap(bytes);
    factory_.received_.putBack(std::move(bytes));
}

std::size_t SocketWorker::handleRecords(const std::string& bytes) {
    std::size_t position = 0;
    for (;;) {
        const protocol::FramedRecord framed = protocol::recordAt(bytes, position);
        if (framed.state == protocol::StreamState::incomplete) return position;
        if (framed.state == protocol::StreamState::hopeless) {
            sendAcknowledgements();
            abandon();
            return bytes.size();
        }
        // A long record takes many passes to arrive and stands first in its last one: only short
        // ones are copied.
        if (position == 0)
            handleRecord(bytes, framed.requestId);
        else
            handleRecord(bytes.substr(position, framed.length), framed.requestId);
        position += framed.length;
    }
}

void SocketWorker::handleRecord(const std::string& bytes, std::uint32_t requestId) {
    const RecordHead head = RecordHead::read(bytes, 0);
    if (isPing(head)) release(requestId, statusOf(bytes, head));
    // An acknowledgement has no more to tell. An object of it would cost a generator fill, and what
    // comes behind it waits meanwhile.
    if (isPing(head) && (head.header & ExternalCommand::replyFlag) != 0) return;
    const ReceivedCommand received =
        recognise(bytes, factory_.receiver_.prototypes(), factory_.pingPrototype_);
    // The sender is released before the handler runs: it waits for its data by itself. A record
    // that no prototype takes still answers its request.
    if (!isPing(head)) release(requestId, protocol::Ping::handled);
    if (!received.command) return tellUnreadable(received, bytes, factory_.receiver_);
    handleCommand(*received.command);
}

void SocketWorker::release(std::uint32_t requestId, std::uint32_t status) {
    const bool isRefused = status == protocol::Ping::notHandled;
    if (isRefused) factory_.receiver_.onRefused(requestId);
    pending_.complete(requestId, isRefused ? CmdResult::failure : CmdResult::success);
}

void SocketWorker::handleCommand(IExternalCommand& command) {
    const auto& received = static_cast<const ExternalCommand&>(command);
    // Values come in rows and are taken at once. Any other handler may take its time, or answer.
    if (dynamic_cast<const CommandReceiveParamData*>(&command) == nullptr) sendAcknowledgements();
    SocketCommandReplyer replyer(*this, received.requestId(), received.isReply());
    const bool handled = factory_.receiver_.handleCommand(command, replyer);
    if (replyer.wasCalled() || received.isReply()) return;
    replyer.acknowledge(handled ? protocol::Ping::handled : protocol::Ping::notHandled);
}

void SocketWorker::sendNextCommand() {
    ClientSocketCommandFactory::CmdData next;
    std::string bytes;
    do {
        // No wait here: the pump waits for the queue and the socket together.
        if (!factory_.outgoing_.takeIfThere(next)) return;
        bytes = std::move(*next.bytes);
    } while (isWithdrawn(next));
    if (!connection_.isConnected()) return fail(next, Delivery::noConnection);
    note(next, Delivery::silent);
    connection_.send(std::move(bytes));
    if (next.results != nullptr)
        pending_.add(next.requestId, next.timeoutMs, next.results, std::move(next.departure));
}

bool SocketWorker::isWithdrawn(const ClientSocketCommandFactory::CmdData& command) {
    if (command.departure == nullptr) return false;
    const bool staysInAnyCase = command.departure->isCancelled();
    if (!staysInAnyCase && (!connection_.isConnected() || command.departure->mayLeave()))
        return false;
    fail(command, Delivery::withdrawn);
    return true;
}

void SocketWorker::note(const ClientSocketCommandFactory::CmdData& command, Delivery state) {
    if (command.departure != nullptr) command.departure->note(state);
}

void SocketWorker::fail(const ClientSocketCommandFactory::CmdData& command, Delivery state) {
    note(command, state);
    if (command.results != nullptr)
        command.results->push(CmdResult{command.requestId, CmdResult::failure});
}
