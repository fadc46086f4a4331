#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "QorControl.h"
#include "StationSettings.h"
#include "support/TempFolder.h"
#include "Transports.h"
#include "Waiting.h"
#include "WireLog.h"

/// A test station whose host is of any compiler: it uses the C interface alone. Otherwise as
/// Station.
class CStation {
public:
    explicit CStation(Transport transport);
    ~CStation();
    CStation(const CStation&) = delete;
    CStation& operator=(const CStation&) = delete;

    TempFolder folder;

    /// @name What to build; set before the start
    /// @{
    StationSettings settings;
    std::string script;        ///< behaviours of QOR as JSON; empty: none
    std::string settingsPath;  ///< where the settings go and are looked for
    std::string hostPath;      ///< the trace lies beside it; empty: none
    /// @}

    void writeSettings();
    /// Opens the handle with whatever lies at `settingsPath`; its cause.
    int open();
    /// Writes the settings, opens, and waits until QOR answers.
    bool start();
    /// Connects the ECU.
    bool connectEcu(unsigned refreshPeriodMs = 0);
    int close();

    QorHandle handle = nullptr;

    std::vector<WireRecord> wire() const;
    /// The requests of the station as text, from the `from`th record on.
    std::vector<std::string> requests(std::size_t from = 0) const;
    std::string trace() const;
};

/// A host's settings of a connect, with QOR's own values.
QorEcuConnect usualCConnect(unsigned refreshPeriodMs = 0);

/// What the calling thread's last call left: the name of the cause, and the sentence.
std::string lastCall();
std::string lastSentence();
std::string lastCheck();

MATCHER_P(IsCause, expected, QorCauseName(expected)) {
    *result_listener << QorCauseName(arg) << ": " << lastSentence();
    return arg == expected;
}
