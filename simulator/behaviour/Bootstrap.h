#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "script/Script.h"
#include "wire/Payloads.h"

namespace simulator {

/// The connection to the ECU: the progress and result reports of a connect, and whether the ECU is
/// online. Runs on, unheard, while no client is there.
class Bootstrap {
public:
    void start(const BootstrapPlan& plan, std::uint64_t nowMs);
    void disconnect();
    void setOnline(bool online) { online_ = online; }

    bool isOnline() const { return online_; }

    /// The reports that have become due, oldest first.
    std::vector<ParamDataPayload> poll(std::uint64_t nowMs);
    /// When the next report is due.
    std::optional<std::uint64_t> nextMs() const;

private:
    std::uint64_t stepMs(std::uint32_t step) const;

    std::optional<BootstrapPlan> running_;
    std::uint64_t startedMs_ = 0;
    std::uint32_t stepsDone_ = 0;
    bool online_ = false;
};

}  // namespace simulator
