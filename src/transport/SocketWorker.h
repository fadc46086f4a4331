#pragma once

#include <string>

#include "transport/ClientConnInstance.h"
#include "transport/ClientSocketCommandFactory.h"
#include "transport/PendingRequests.h"
#include "transport/ReceivedCommand.h"

/// What the worker thread of the TCP transport owns and does: the connection, the requests whose
/// answers are awaited, and the loop over both. It lives on that thread's stack.
class SocketWorker {
public:
    explicit SocketWorker(ClientSocketCommandFactory& factory);

    /// One pass: parse and handle what has arrived, fail what is overdue, see to the connection,
    /// send at most one command, wait at most 1 ms for something to do. If memory runs out, the
    /// connection is given up, because the place in its stream is lost.
    void runOnce();

    /// Sends at once, on the worker thread only; drops the bytes while not connected.
    void sendNow(const IExternalCommand& command);

    /// Sends with the next acknowledgements, at the latest when all that has arrived is handled;
    /// on the worker thread only. One call of the system costs as much as half a command object.
    void acknowledge(const IExternalCommand& ping);

private:
    void work();
    /// Gives the connection up, and what has come over it.
    void abandon();
    /// Makes known whether there is a connection.
    void noteConnection();
    void handleReceived();
    /// Handles the complete records at the head of `bytes`; returns how many bytes they took.
    std::size_t handleRecords(const std::string& bytes);
    /// `bytes` begin with the record.
    void handleRecord(const std::string& bytes, std::uint32_t requestId);
    /// The sender of a request, if it still waits, by what QOR has said of it.
    void release(std::uint32_t requestId, std::uint32_t status);
    void handleCommand(IExternalCommand& command);
    void sendNextCommand();
    /// Whether a command may not leave any more; its sender is told then.
    bool isWithdrawn(const ClientSocketCommandFactory::CmdData& command);
    static void note(const ClientSocketCommandFactory::CmdData& command, Delivery state);
    static void fail(const ClientSocketCommandFactory::CmdData& command, Delivery state);
    void sendAcknowledgements();

    ClientSocketCommandFactory& factory_;
    PendingRequests pending_;
    std::string acknowledgements_;  // not sent yet; in front of whatever is sent next
    ClientConnInstance connection_;
};
