#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QorControlFacade.h"
#include "StationSettings.h"
#include "support/FakeMonitor.h"
#include "support/RecordingEolLog.h"
#include "support/TempFolder.h"
#include "Transports.h"
#include "WireLog.h"

/// A test station: a host with the library in it, a settings file of its own, and QOR's stand-in
/// as a process of its own, which the library starts. Everything that is unique on the machine
/// (port, window titles, files) is this station's alone. Leaves neither files nor processes.
class Station {
public:
    explicit Station(Transport transport);
    ~Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    TempFolder folder;

    /// @name What to build; set before the start
    /// @{
    StationSettings settings;
    std::string script;         ///< behaviours of QOR as JSON; empty: none
    std::string settingsPath;   ///< where the settings go and are looked for
    std::string hostPath;       ///< the host's executable; the trace lies beside it
    bool withLog = true;        ///< whether the host has a log
    unsigned readPeriodMs = 0;  ///< the refresh period before the first connect
    /// @}

    void writeSettings();
    /// Constructs the facade with whatever lies at `settingsPath`.
    void construct();
    /// Writes the settings and constructs the facade.
    void open();
    /// The same, and waits until QOR answers; false (and a failure) if it does not.
    bool start();
    /// Connects the ECU with the monitor.
    bool connectEcu(unsigned refreshPeriodMs = 0);
    /// Destroys the facade; with it QOR ends, unless somebody else started it.
    void close();

    /// Ends QOR as a crash would, and starts it again with the settings and the script of now.
    void restartQor();
    /// Starts QOR by hand and waits until it is ready.
    void startQorByHand() const;
    /// Waits until the library asks QOR for the ECU's state: it has found it.
    bool awaitContact() const;

    QorControlFacade* operator->() { return facade_.get(); }
    QorControlFacade& facade() { return *facade_; }

    RecordingEolLog log;
    FakeMonitor monitor;

    std::vector<WireRecord> wire() const;
    /// The requests of the station and the answers of QOR as text, from the `from`th record on.
    std::vector<std::string> requests(std::size_t from = 0) const;
    std::vector<std::string> answers(std::size_t from = 0) const;

    /// Lines of the trace and of the host's log, elapsed times replaced by "t: # ms".
    std::vector<std::string> trace(std::size_t from = 0) const;
    std::vector<std::string> logLines(std::size_t from = 0) const;
    bool traceHolds(const std::string& words) const;
    std::string tracePath() const;

private:
    std::unique_ptr<QorControlFacade> facade_;
};

/// A host's settings of a connect, with QOR's own values.
QorControlFacade::EcuConnect usualConnect(unsigned refreshPeriodMs = 0);
