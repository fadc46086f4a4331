#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QorControlFacade.h"
#include "StationBase.h"
#include "support/FakeMonitor.h"
#include "support/RecordingEolLog.h"

/// A test station: a host with the library in it. Leaves neither files nor processes.
class Station : public StationBase {
public:
    explicit Station(Transport transport);
    ~Station();

    /// @name What to build; set before the start
    /// @{
    bool withLog = true;        ///< whether the host has a log
    unsigned readPeriodMs = 0;  ///< the refresh period before the first connect
    /// @}

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
