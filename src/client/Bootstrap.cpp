#include "client/Bootstrap.h"

#include "common/Deadline.h"
#include "common/Pump.h"

using qorcontrol::Cause;

namespace {

constexpr std::int32_t resultSuccess = -1;
constexpr std::int32_t resultReported = -2;
constexpr std::uint32_t onlineMs = 15000;
constexpr unsigned int pollMs = 1;

}  // namespace

Bootstrap::Bootstrap(ClientExternalOperating& client, common::Guarded<ClientState>& state,
                     const std::atomic<bool>& operating, IProgressMonitor& monitor,
                     ClientExternalOperating::ConnectCallback& callback, Epoch epoch,
                     std::uint32_t stepsBefore)
    : client_(client),
      state_(state),
      operating_(operating),
      monitor_(monitor),
      callback_(callback),
      epoch_(epoch),
      stepsBefore_(stepsBefore) {}

bool Bootstrap::follow() {
    state_.lock()->bootstrapResults.clear();
    const bool succeeded = awaitResult() && awaitOnline();
    reportFigure();  // the last one often comes right before the result
    return succeeded;
}

bool Bootstrap::awaitResult() {
    while (operating_) {
        common::pumpCopyData();
        const Phase phase = lookForResult();
        if (phase != Phase::goesOn) return phase == Phase::succeeded;
        if (monitor_.isCancelled())
            return failOffline(Cause::cancelled, "Bootstrap failed - cancelled");
        reportProgress();
        reportFigure();
        common::sleepMs(pollMs);
    }
    return fail(Cause::agentEnded, "Bootstrap failed - some problem");
}

Bootstrap::Phase Bootstrap::lookForResult() {
    std::int32_t result = 0;
    if (!takeResult(result)) return Phase::goesOn;
    if (result == resultSuccess) return Phase::succeeded;
    if (result == resultReported)
        fail(Cause::connectReported, "Bootstrap failed - QOR reported");
    else
        fail(Cause::badAnswer, "Bootstrap failed - unknown code");
    return Phase::failed;
}

bool Bootstrap::takeResult(std::int32_t& result) {
    const auto state = state_.lock();
    if (state->bootstrapResults.empty()) return false;
    result = state->bootstrapResults.front();
    state->bootstrapResults.pop_front();
    return true;
}

bool Bootstrap::awaitOnline() {
    const auto deadline = common::Deadline::after(common::now(), onlineMs);
    while (operating_) {
        common::pumpCopyData();
        if (client_.isEcuOnline()) return true;
        if (monitor_.isCancelled())
            return failOffline(Cause::cancelled, "Bootstrap failed - cancelled");
        if (deadline.hasPassed())
            return failOffline(Cause::ecuOffline, "Bootstrap failed - timeout");
        reportProgress();
        reportFigure();
        common::sleepMs(pollMs);
    }
    return fail(Cause::agentEnded, "Bootstrap failed - some problem");
}

void Bootstrap::reportProgress() {
    // Progress is not reset by a connect: what the previous one left counts as a first change.
    const std::int32_t progress = state_.lock()->bootstrapProgress;
    if (progress == seenProgress_) return;
    callback_.onProgress();
    seenProgress_ = progress;
}

void Bootstrap::reportFigure() {
    std::int32_t figure = 0;
    std::uint32_t steps = 0;
    {
        const auto state = state_.lock();
        figure = state->bootstrapFigure;
        steps = state->bootstrapSteps - stepsBefore_;
    }
    if (steps == seenSteps_) return;
    seenSteps_ = steps;
    callback_.onFigure(figure, steps);
}

bool Bootstrap::fail(Cause cause, const char* message) {
    cause_ = cause;
    reason_ = message;
    monitor_.reportError(message, 0);
    return false;
}

bool Bootstrap::failOffline(Cause cause, const char* message) {
    if (client_.epoch() != epoch_)
        cause = Cause::qorChanged;
    else if (client_.transport().isPeerGone())
        cause = Cause::noConnection;
    return fail(cause, message);
}
