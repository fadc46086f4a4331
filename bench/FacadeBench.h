#pragma once

#include <memory>
#include <string>
#include <vector>

#include "facade/QorControlFacade.h"
#include "Process.h"

enum class Transport { tcp, window };

/// A facade with the simulated QOR behind it, as a station has it: the ECU connected, one
/// parameter known by name.
class FacadeBench {
public:
    explicit FacadeBench(Transport transport);
    ~FacadeBench();
    FacadeBench(const FacadeBench&) = delete;
    FacadeBench& operator=(const FacadeBench&) = delete;

    void ping();
    /// A read that QOR answers; the value cache is off.
    void readParam();
    /// A read that the value cache answers.
    void readCachedParam();

private:
    void awaitReady();
    void connect(unsigned int refreshPeriodMs);

    const std::string settingsPath_;
    std::unique_ptr<QorControlFacade> facade_;
    std::vector<double> values_;
    unsigned int periodMs_ = 0;
};
