#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "client/ClientExternalOperating.h"

/// Follows one ECU connection from QOR's acceptance of the request to the ECU being online. QOR
/// reports on the way through values of reserved parameter ids, which the receiving side has
/// stored in the client's state.
class Bootstrap {
public:
    Bootstrap(ClientExternalOperating& client, common::Guarded<ClientState>& state,
              const std::atomic<bool>& operating, IProgressMonitor& monitor,
              ClientExternalOperating::ConnectCallback& callback, Epoch epoch,
              std::uint32_t stepsBefore);

    /// True once the ECU is online. On failure the monitor has been told why. The first phase,
    /// until QOR reports the result, has no time limit; the monitor can cancel both.
    bool follow();

    /// Of a failure; the reason is what the monitor was told.
    qorcontrol::Cause cause() const { return cause_; }
    const char* reason() const { return reason_; }

private:
    enum class Phase { goesOn, succeeded, failed };

    bool awaitResult();
    bool awaitOnline();
    Phase lookForResult();
    bool takeResult(std::int32_t& result);
    void reportProgress();
    void reportFigure();
    bool fail(qorcontrol::Cause cause, const char* message);
    /// The same for an end without the ECU online, unless QOR itself has gone.
    bool failOffline(qorcontrol::Cause cause, const char* message);

    ClientExternalOperating& client_;
    common::Guarded<ClientState>& state_;
    const std::atomic<bool>& operating_;
    IProgressMonitor& monitor_;
    ClientExternalOperating::ConnectCallback& callback_;
    const Epoch epoch_;                // of the QOR that has taken the request
    const std::uint32_t stepsBefore_;  // figures that had come when the connect began
    std::int32_t seenProgress_ = -1;
    std::uint32_t seenSteps_ = 0;
    qorcontrol::Cause cause_ = qorcontrol::Cause::none;
    const char* reason_ = "";
};
