#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "common/Thread.h"
#include "protocol/Commands.h"
#include "qorcontrol/ThreadSafeQueue.h"
#include "transport/CmdResult.h"
#include "transport/ConnectionDataAccepter.h"
#include "transport/Departure.h"
#include "transport/ICommandReceiver.h"
#include "transport/IExternalCommandFactory.h"
#include "transport/ReceiveBuffer.h"

class SocketWorker;

/// The TCP transport: connects to QOR's listening socket and carries commands back to back on the
/// stream. A worker thread owns the connection, matches acknowledgements to requests by request
/// id and runs the handlers of everything that QOR sends; `send` hands it commands from other
/// threads.
///
/// The worker, and with it the receiver, is at work from `start` to `stop`.
class ClientSocketCommandFactory : public ConnectionDataAccepter, public IExternalCommandFactory {
public:
    using CmdResult = ::CmdResult;

    /// One command on its way to the worker.
    struct CmdData {
        std::uint32_t requestId = 0;
        unsigned int timeoutMs = 0;
        /// Shared by the copies in the ring, whose slots live on: the worker empties it.
        std::shared_ptr<std::string> bytes;
        CmdResultQueue* results = nullptr;     ///< null when nobody waits
        std::shared_ptr<Departure> departure;  ///< null when it leaves in any case
    };

    /// Does not connect; the worker does.
    ClientSocketCommandFactory(std::string serverIp, unsigned int port, ICommandReceiver& receiver);
    ~ClientSocketCommandFactory() override;

    /// Throws std::runtime_error if the worker cannot be started.
    void start() override;
    /// Waits for the worker's end, at most about 5 s; a worker that hangs (in a message box, in
    /// the look-up of a host name) is let go, and the result is false.
    bool stop() override;

    /// From any thread. On the worker's own thread (in a handler) the bytes go straight to the
    /// connection, nothing waits and the result is true; without a connection they are dropped.
    /// Elsewhere: with `doNotWait` true as soon as the command is queued; without a limit the
    /// worker gives the request up at its next pass unless the answer is already there.
    bool send(std::unique_ptr<IExternalCommand> command, unsigned int timeoutMs) override;

    /// A command that waits for the connection, or behind others, does not leave once its sender
    /// has given it up.
    Delivery sendIf(Permit permit, std::unique_ptr<IExternalCommand> command,
                    unsigned int timeoutMs) override;

    bool isConnected() const override { return isConnected_; }

    /// From any thread. Heeded with the worker's next pass, of the connection that stands, too.
    void setNoDelay(bool isWanted) override { noDelay_ = isWanted; }

    /// No message brings anything here.
    void awaitInput(common::Event& handled, unsigned int timeoutMs) override {
        handled.wait(timeoutMs);
    }

    unsigned int defaultTimeout(unsigned int commandType) const override;

    /// A new connection starts with an empty buffer: what the broken one left would misalign it.
    /// Any after the first is to another QOR, for all that anybody knows.
    void onConnected(ConnInstance& connection) override;
    void onData(ConnInstance& connection, const std::string& bytes) override;
    /// Nothing to do: the worker sees by itself that a connection is gone, and makes the next.
    void onClosed(ConnInstance& connection) override;
    /// Never: `stop` lets an attempt end by itself, which takes two seconds at most, unless a name
    /// is looked up.
    bool isStopping() const override;

private:
    friend class SocketWorker;

    static unsigned __stdcall workerThread(void* factory);
    static CmdData makeData(const IExternalCommand& command, unsigned int timeoutMs);
    /// The whole send of a command that somebody waits for.
    Delivery deliver(const CmdData& command);
    bool awaitResult(const CmdData& sent);

    ICommandReceiver& receiver_;
    const CommandPing pingPrototype_;
    common::Thread worker_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> noDelay_{false};
    bool stopped_ = true;  // no worker runs; false once one was let go
    const std::string serverAddress_;
    const unsigned int serverPort_;
    ThreadSafeQueue<CmdData> outgoing_;
    ReceiveBuffer received_;
    bool wasConnected_ = false;                  // of the worker alone
    std::atomic<bool> isConnected_{false};       // as the worker last saw it
    std::atomic<unsigned int> workerThread_{0};  // its id; 0: it does not run
    SocketWorker* running_ = nullptr;            // on the stack of that thread, and for it alone
};
