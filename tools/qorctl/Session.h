#pragma once

#include <memory>
#include <string>

#include "ConnectOptions.h"
#include "Console.h"
#include "ConsoleLog.h"
#include "Contact.h"
#include "HeldActuators.h"
#include "Outcome.h"
#include "QorControlFacade.h"
#include "SettingsFile.h"
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
    bool keepsGoing = false;  ///< a loss of the ECU, QOR or a stream ends and fails nothing

    /// Declares the options; the object must live until the command line is parsed.
    void declare(CLI::App& command);

    /// What stands for the host's executable: the library derives the trace file from it.
    std::string hostPath() const;
};

/// One conversation with QOR: the facade and what it needs of its host.
class Session {
public:
    /// The facade starts QOR in the background; paths in `options` are made absolute.
    Session(const SessionOptions& options, Console& console);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const SessionOptions& options() const { return options_; }
    const SettingsFile& settings() const { return settings_; }
    const TraceFile& trace() const { return trace_; }
    const ConsoleLog& log() const { return log_; }
    QorControlFacade& facade() { return *facade_; }
    HeldActuators& actuators() { return actuators_; }
    Contact& contact() { return contact_; }
    Console& console() { return console_; }

    /// Whether the operation is one of many in this conversation, so that what it takes may be used
    /// by the next.
    bool hasMore() const { return hasMore_; }
    void expectMore() { hasMore_ = true; }

    /// Waits until QOR answers or the library has given up starting it.
    Outcome awaitQor();

    /// For what takes long: false once the ECU or QOR was lost, unless the command keeps going.
    bool mayGoOn() { return contact_.look() || options_.keepsGoing; }

    /// Connects the ECU; Ctrl-C cancels. Actuators are given back before.
    Outcome connectEcu(const ConnectOptions& connection = {});

    /// For what makes QOR let the ECU go: nothing is held any more, and its loss no failure.
    void letEcuGo();

    /// Tells what was seen of it: what the library does then depends on the settings.
    Outcome shutDown();

    /// Half a refresh period and the grain of the system's clock: after that long the library asks
    /// QOR again for a value that it has read or written.
    unsigned int staleAfterMs() const;

private:
    std::unique_ptr<QorControlFacade> startedFacade() const;
    std::string tellEnd() const;

    const SessionOptions options_;
    const SettingsFile settings_;
    Console& console_;
    const TraceFile trace_;
    const ConsoleLog log_;
    bool hasMore_ = false;
    std::unique_ptr<QorControlFacade> facade_;  // behind the log, which it uses
    HeldActuators actuators_;
    Contact contact_;
};

}  // namespace qorctl
