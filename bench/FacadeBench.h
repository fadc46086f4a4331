#pragma once

#include <memory>
#include <string>
#include <vector>

#include "facade/QorControlFacade.h"
#include "Settings.h"
#include "Taker.h"

/// A facade with the simulated QOR behind it, as a station has it: the ECU connected, one
/// parameter known by name.
class FacadeBench {
public:
    explicit FacadeBench(Transport transport, Answers answers = Answers::stamped);
    ~FacadeBench();
    FacadeBench(const FacadeBench&) = delete;
    FacadeBench& operator=(const FacadeBench&) = delete;

    /// See qorcontrol::setTcpNoDelay; heeded with the next request.
    void setNoDelay(bool isWanted);

    void ping();
    /// A read that QOR answers; the value cache is off.
    void readParam();
    /// A read that the value cache answers.
    void readCachedParam();

    /// A KWP exchange for which QOR takes 300 ms.
    void slowExchange();

    /// Streams twelve values, which QOR sends every 100 ms, to a host that takes them as long as
    /// the result lives; keep it beyond `stopStream`. Returns when they flow.
    std::unique_ptr<Taker> startStream();
    void stopStream();

private:
    void connect(unsigned int refreshPeriodMs);

    const std::string settingsPath_;
    ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>> queue_{10};  // outlives the facade
    std::unique_ptr<QorControlFacade> facade_;
    std::vector<double> values_;
    unsigned int periodMs_ = 0;
};
