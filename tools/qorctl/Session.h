#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Background.h"
#include "BoxWatch.h"
#include "ConnectOptions.h"
#include "Console.h"
#include "ConsoleLog.h"
#include "Contact.h"
#include "DelayedReads.h"
#include "HeldActuators.h"
#include "Outcome.h"
#include "QorControlFacade.h"
#include "SettingsFile.h"
#include "start/Start.h"
#include "TraceFile.h"

namespace CLI {
class App;
}

namespace qorctl {

/// What every command that talks to QOR is told on the command line.
struct SessionOptions {
    std::string settingsPath;
    std::string tracePath;  ///< empty: beside this program
    std::string transport;  ///< "tcp" or "window"; empty: as the settings say
    unsigned int timeoutMs = 1000;
    unsigned int refreshMs = 200;
    bool tcpNoDelay = false;  ///< see qorcontrol::setTcpNoDelay
    std::string boxAnswers;   ///< see BoxAnswers; empty: boxes are shown
    bool keepsGoing = false;  ///< a loss of the ECU, QOR or a stream ends and fails nothing

    /// Declares the options; the object must live until the command line is parsed.
    void declare(CLI::App& command);

    /// What stands for the host's executable: the library derives the trace file from it.
    std::string hostPath() const;
};

/// One conversation with QOR: the facade and what it needs of its host.
class Session {
public:
    /// Paths in `options` are made absolute.
    Session(const SessionOptions& options, Console& console);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const SessionOptions& options() const { return options_; }
    const SettingsFile& settings() const { return settings_; }
    const TraceFile& trace() const { return trace_; }
    const ConsoleLog& log() const { return log_; }
    /// @name Once QOR was started
    /// @{
    QorControlFacade& facade() { return *facade_; }
    HeldActuators& actuators() { return *actuators_; }
    Contact& contact() { return *contact_; }
    Background& background() { return background_; }
    /// @}
    /// Actuators that may still be under direct control.
    std::vector<std::string> notGivenBack() const;
    Console& console() { return console_; }

    /// Whether the operation is one of many in this conversation, so that what it takes may be used
    /// by the next.
    bool hasMore() const { return hasMore_; }
    void expectMore() { hasMore_ = true; }

    /// Lets the library start QOR, if nothing is against it, and waits until it answers or it is
    /// seen that it will not.
    Outcome start();
    bool namesExecutable() const;
    /// Whether nothing was begun because another program talks to that QOR.
    bool isOccupied() const { return isOccupied_; }

    /// For what takes long: false once the ECU or QOR was lost, unless the command keeps going.
    bool mayGoOn() { return contact_->look() || options_.keepsGoing; }

    /// Connects the ECU; Ctrl-C cancels. Actuators are given back before.
    Outcome connectEcu(const ConnectOptions& connection = {});

    /// For what makes QOR let the ECU go: nothing is held any more, and its loss no failure.
    void letEcuGo();

    /// Tells what was seen of it: what the library does then depends on the settings.
    Outcome shutDown();

    /// Of this conversation.
    DelayedReads& reads() { return reads_; }
    /// What to do about reads that wait for confirmations; empty if they do not.
    std::string delayHint() const;

    /// Half a refresh period and the grain of the system's clock: after that long the library asks
    /// QOR again for a value that it has read or written.
    unsigned int staleAfterMs() const;

private:
    void startLibrary();
    Outcome awaitQor();
    /// Whose reason is what is seen from outside, if anything is.
    Outcome withReason(Outcome failed) const;
    /// What is seen for the first time and may pass is a note; what is for good ends the start.
    std::optional<Outcome> lookOutside();
    void endInVain(Outcome& outcome);
    Outcome refused(start::Refusal refusal);
    std::string tellEnd() const;
    std::string leftBehind() const;

    const SessionOptions options_;
    const SettingsFile settings_;
    Console& console_;
    const TraceFile trace_;
    const ConsoleLog log_;
    DelayedReads reads_;
    bool hasMore_ = false;
    bool isOccupied_ = false;
    bool isQorGone_ = false;    // it was started and has ended
    bool isAgentGone_ = false;  // the library has given up at its start
    std::string noted_;         // what was seen last of a QOR that does not come
    start::Start start_;
    std::unique_ptr<QorControlFacade> facade_;  // behind the log, which it uses
    std::unique_ptr<HeldActuators> actuators_;
    std::unique_ptr<Contact> contact_;
    std::unique_ptr<BoxWatch> boxes_;
    Background background_;
};

}  // namespace qorctl
