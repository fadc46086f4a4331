#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "common/TimeLimits.h"
#include "protocol/IExternalCommand.h"
#include "qorcontrol/Event.h"
#include "transport/Delivery.h"

/// A transport: carries commands to QOR and hands what QOR sends to the `ICommandReceiver` that it
/// was given. The client owns exactly one.
class IExternalCommandFactory {
public:
    /// Special values of a time-out in milliseconds; `common::noLimitMs` is one besides.
    static constexpr unsigned int doNotWait = 0;
    static constexpr unsigned int useDefault = common::transportDefaultMs;

    /// Delivers `command`; true if QOR acknowledged or answered it within `timeoutMs`. True does
    /// not say that an answer carried data, nor that its handler accepted it: whoever reads an
    /// answer waits for it by itself. The result of a send that does not wait means nothing.
    virtual bool send(std::unique_ptr<IExternalCommand> command, unsigned int timeoutMs) = 0;

    virtual ~IExternalCommandFactory() = default;

    /// What `useDefault` stands for, per command id. Asked for when a host passes that number; the
    /// client's own time-outs never are it.
    virtual unsigned int defaultTimeout(unsigned int commandType) const = 0;

    /// Asked on the thread that sends a command, immediately before its bytes leave.
    using Permit = std::function<bool()>;

    /// As `send`, for a command that leaves only if `permit` (null: always) is still true when its
    /// turn has come; and it tells why the send has failed. The permit is asked only for what can
    /// leave: once it has said yes, the command does.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): another transport keeps it
    virtual Delivery sendIf(Permit permit, std::unique_ptr<IExternalCommand> command,
                            unsigned int timeoutMs) {
        if (permit != nullptr && !permit()) return Delivery::withdrawn;
        return send(std::move(command), timeoutMs) ? Delivery::taken : Delivery::silent;
    }

    /// Whether there is a connection, as far as is known without asking the system. Where each
    /// command looks for QOR by itself there always is one.
    virtual bool isConnected() const { return true; }

    /// Whether the QOR that took the last command is known to be gone; asks the system.
    virtual bool isPeerGone() { return !isConnected(); }

    /// Whether a short record leaves at once though QOR's system has not confirmed the one before
    /// it yet. Where records have nothing to wait for it says nothing.
    virtual void setNoDelay(bool /*isWanted*/) {}

    /// Called in turns with a look for what QOR has sent and the dispatch of this thread's
    /// messages: waits, at most so long, until another turn is worth while. `handled` is signalled
    /// when another thread has handled something. One that does not wait costs nothing but the
    /// turns.
    virtual void awaitInput(common::Event& /*handled*/, unsigned int /*timeoutMs*/) {}

    /// Begins the work of threads of its own, if it has any, once its owner is ready for them.
    /// Throws std::runtime_error if that is not possible.
    virtual void start() {}

    /// Ends that work. False if a thread hangs in a call of the system: neither the transport nor
    /// anything that its handlers use may then be deleted.
    virtual bool stop() { return true; }

protected:
    IExternalCommandFactory() = default;
    IExternalCommandFactory(const IExternalCommandFactory&) = delete;
    IExternalCommandFactory& operator=(const IExternalCommandFactory&) = delete;
};
