#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "protocol/IClientCommand.h"
#include "protocol/IExternalCommand.h"

/// What is known of a record that could not be made a command: of an unknown id, with unreasonable
/// counts, or too long for the memory that is left.
struct UnreadRecord {
    std::uint32_t commandId = 0;
    std::uint32_t requestId = 0;
    bool isReply = false;  ///< it names the request that it answers
    bool lacksMemory = false;
};

/// The border of a transport: all that it knows of whoever takes what QOR sends. The client
/// implements it; a transport is given it at its construction.
///
/// Ownership and lifetime: a transport owns nothing of its receiver, which as a rule owns the
/// transport. The receiver must be complete before `IExternalCommandFactory::start`, or before its
/// thread dispatches messages, and stay until the transport is deleted; for ever, if `stop` has
/// failed.
///
/// Threads: the transport calls from one thread only. Over TCP that is its worker; with window
/// messages it is the thread that made the transport, while that thread dispatches messages or is
/// inside of `send`. There a handler that sends or dispatches may be interrupted by the next call;
/// on the worker one call ends before the next begins. No lock of the transport is held. Nothing
/// may be thrown.
class ICommandReceiver {
public:
    using Prototypes = std::vector<std::unique_ptr<IClientCommand>>;

    /// One prototype of each command that QOR may send or answer, in the order in which a record
    /// is offered to them. It does not change while the transport lives.
    virtual const Prototypes& prototypes() const = 0;

    /// Acts on a command that one of the prototypes has made of a record, or, over TCP, on a ping
    /// that QOR asks an answer for; false means "not handled", also for lack of memory. It may take
    /// the content out of the command and send commands of its own, but keep neither the command
    /// nor the replyer.
    virtual bool handleCommand(IExternalCommand& command,
                               IExternalCommand::ICommandReplyer& replyer) = 0;

    /// QOR is another one from now on, for all that the transport knows: the connection is one
    /// after the first, or its window is another one or that of another process. Said before
    /// anything that it sends is handled, and before any permit is asked for a command that leaves
    /// for it.
    virtual void onNewQor() = 0;

    /// QOR has refused a request, of a sender that may have given up long ago; said before one that
    /// still waits is told. Only where refusals come by themselves, as over TCP: with window
    /// messages the result of a send is all there is.
    virtual void onRefused(std::uint32_t requestId) { static_cast<void>(requestId); }

    /// A record has come that no prototype takes.
    virtual void onUnreadable(const UnreadRecord& record) { static_cast<void>(record); }

protected:
    ~ICommandReceiver() = default;
};
