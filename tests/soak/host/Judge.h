#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "Lateness.h"
#include "Report.h"
#include "Stamps.h"

namespace soak {

/// What one call has to keep to.
struct Limits {
    bool isTimed = true;
    unsigned waitMs = 0;
};

/// Counts the calls by how they ended, and holds each against its limits.
class Judge {
public:
    static constexpr unsigned causes = 32;

    /// @param graceMs  what may be added to each time on a machine that has too much other work
    Judge(Report& report, unsigned graceMs) : report_(report), graceMs_(graceMs) {}

    /// A call that has just ended. The calling thread's `lastOutcome` must still be that of it.
    void callEnded(const std::string& where, const Limits& limits, std::uint64_t startUs, bool ok);
    /// A value that a call has brought; QOR must have made it since then.
    void stamp(const std::string& where, double value, unsigned number, std::uint64_t sinceUs);
    /// So many ms after QOR could be reached a request has worked.
    void recovered(const std::string& where, std::uint64_t sinceUs);

    void expect(bool holds, const std::string& where, const std::string& what) {
        if (!holds) report_.breach(where, what);
    }

    /// @name How much older than its call a value out of the library's cache may be
    /// It is half a refresh period there, behind a call of its own that took its time.
    /// @{
    void beginCache(unsigned periodMs);
    /// While it is not known which period holds.
    void allowAnyAge() { cacheUs_ = std::uint64_t{1} << 40; }
    std::uint64_t oldestCachedUs() const;
    /// @}
    /// Whether an answer that QOR gave to an earlier request, and of which the library does not say
    /// that it may be one, is a breach. Not where QOR does wrong and does not say whom it answers.
    std::atomic<bool> isStrict{true};
    /// Whether QOR has answered all that it was asked, so that no answer may be marked as perhaps
    /// an earlier request's.
    std::atomic<bool> owesNothing{false};
    /// Which QOR it is; 0 while one goes and another one comes.
    std::atomic<unsigned> life{0};

    bool isBusySince(std::uint64_t startUs) const { return lateness_.isBusy(startUs, nowUs()); }

    /// As JSON.
    std::string countsAsJson() const;

private:
    void judgeTime(const std::string& where, unsigned waitMs, std::uint64_t startUs,
                   std::uint64_t endUs);

    unsigned allowanceMs(unsigned latenessMs, bool isBusy) const;

    Report& report_;
    const unsigned graceMs_;
    std::atomic<std::uint64_t> cacheUs_{0};        // 0: there is none
    std::atomic<std::uint64_t> longestCallUs_{0};  // of those that have worked with this cache
    Lateness lateness_;
    std::atomic<std::uint64_t> calls_{0}, values_{0}, marked_{0}, recoveries_{0};
    std::atomic<int> worstOverrunMs_{0};
    std::atomic<unsigned> worstRecoveryMs_{0}, worstLatenessMs_{0};
    std::atomic<std::uint64_t> late_{0}, lateOnBusy_{0};
    std::array<std::atomic<std::uint64_t>, causes> byCause_{};
};

}  // namespace soak
