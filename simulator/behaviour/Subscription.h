#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace simulator {

/// The parameters that the client wants pushed, and when their values are due.
class Subscription {
public:
    void replace(std::vector<std::uint32_t> indices);
    /// The period of the last connect; anything below minPeriodMs counts as that.
    void setPeriod(std::uint32_t periodMs);
    void stall(std::uint32_t index, bool stalled);
    void stallAll(bool stalled);

    /// The parameters to push now. Periods missed (the machine was busy) are not made up for.
    std::vector<std::uint32_t> poll(std::uint64_t nowMs);
    std::optional<std::uint64_t> nextMs() const;

    static constexpr std::uint32_t minPeriodMs = 10;

private:
    std::vector<std::uint32_t> indices_;
    std::set<std::uint32_t> stalled_;
    bool allStalled_ = false;
    std::uint32_t periodMs_ = 100;
    std::uint64_t nextMs_ = 0;  // in the past = at once
};

}  // namespace simulator
