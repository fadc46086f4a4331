#pragma once

#include <memory>
#include <string>

#include "protocol/Commands.h"
#include "transport/ExternalOperatingWnd.h"
#include "transport/ICommandReceiver.h"
#include "transport/IExternalCommandFactory.h"
#include "transport/WindowPlatform.h"

/// The window-message transport: a command is one copy-data message to the window of the other
/// side, handled there before the send returns. Each side finds the other's hidden window by its
/// title.
///
/// Everything happens on the thread that makes the object, which must dispatch its messages: what
/// QOR sends is handled inside that dispatching, or, where the system allows it, inside a `send`.
/// Nothing here depends on which of the two it is.
class ExternalCommandFactory : public IExternalCommandFactory {
public:
    /// The tag of the protocol's messages; all others are refused unread.
    static constexpr unsigned long messageTag = 3084;

    /// Up to this time-out a peer that does not react at all is given up at once.
    static constexpr unsigned int abortIfHungMs = 1000;

    /// Throws std::runtime_error if the window cannot be created.
    ExternalCommandFactory(
        const std::string& clientWindowName, std::string serverWindowName,
        ICommandReceiver& receiver,
        std::unique_ptr<IWindowPlatform> platform = std::make_unique<WindowPlatform>());
    ~ExternalCommandFactory() override;

    /// True if QOR's handler accepted the message in time. A sender that this thread still holds
    /// is released first, so that the two sides never wait for each other. What a time-out of 0
    /// does is the system's affair.
    bool send(std::unique_ptr<IExternalCommand> command, unsigned int timeoutMs) override;

    /// The permit is asked when QOR's window has been found.
    Delivery sendIf(Permit permit, std::unique_ptr<IExternalCommand> command,
                    unsigned int timeoutMs) override;

    bool isPeerGone() override;

    /// What comes is handled where this thread's messages are dispatched: until there is one to be.
    void awaitInput(common::Event& handled, unsigned int timeoutMs) override;

    unsigned int defaultTimeout(unsigned int commandType) const override;

    /// Handles a received message; the result goes back to the sender.
    bool onCopyData(const COPYDATASTRUCT* record);

private:
    class CommandReplyer;

    /// QOR's window as it was last seen, and whose it was; null: none is known to be there.
    struct Peer {
        HWND window = nullptr;
        unsigned long process = 0;
    };

    Delivery deliver(const std::string& bytes, unsigned int timeoutMs);
    HWND findServer();
    void lookAfterPeer();
    void releaseHeldSender();
    bool handleBytes(const std::string& bytes);

    std::unique_ptr<ExternalOperatingWnd> window_;
    const std::string serverWindowName_;
    ICommandReceiver& receiver_;
    const CommandPing pingPrototype_;
    const std::unique_ptr<IWindowPlatform> platform_;
    Peer peer_;
    unsigned int handling_ = 0;  // messages in onCopyData, one inside the other
};
