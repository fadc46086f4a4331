#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "QorControl.h"
#include "StationBase.h"
#include "Waiting.h"

/// A test station whose host is of any compiler: it uses the C interface alone. Leaves
/// neither files nor processes.
class CStation : public StationBase {
public:
    explicit CStation(Transport transport);
    ~CStation();

    /// Opens the handle with whatever lies at `settingsPath`; its cause.
    int open();
    /// Writes the settings, opens, and waits until QOR answers.
    bool start();
    /// Connects the ECU.
    bool connectEcu(unsigned refreshPeriodMs = 0);
    int close();

    QorHandle handle = nullptr;

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
