#include "behaviour/Bootstrap.h"

namespace simulator {

namespace {

constexpr std::int32_t bootstrapSucceeded = -1;

}  // namespace

void Bootstrap::start(const BootstrapPlan& plan, std::uint64_t nowMs) {
    running_ = plan;
    startedMs_ = nowMs;
    stepsDone_ = 0;
    online_ = false;
}

void Bootstrap::disconnect() {
    running_.reset();
    online_ = false;
}

std::vector<ParamDataPayload> Bootstrap::poll(std::uint64_t nowMs) {
    std::vector<ParamDataPayload> reports;
    while (running_ && stepMs(stepsDone_ + 1) <= nowMs) {
        ++stepsDone_;
        if (stepsDone_ <= running_->steps) {
            const double percent = 100.0 * stepsDone_ / running_->steps;
            reports.push_back({ParamDataPayload::Progress, percent});
            continue;
        }
        if (running_->result) {
            reports.push_back({ParamDataPayload::Result, static_cast<double>(*running_->result)});
            online_ = *running_->result == bootstrapSucceeded && running_->online;
        }
        running_.reset();
    }
    return reports;
}

std::optional<std::uint64_t> Bootstrap::nextMs() const {
    if (!running_) return std::nullopt;
    return stepMs(stepsDone_ + 1);
}

// Progress is spread evenly; the result comes with the last step, right behind it.
std::uint64_t Bootstrap::stepMs(std::uint32_t step) const {
    if (step >= running_->steps) return startedMs_ + running_->durationMs;
    return startedMs_ + static_cast<std::uint64_t>(running_->durationMs) * step / running_->steps;
}

}  // namespace simulator
