#include "Judge.h"

#include <algorithm>

#include "qorcontrol/Outcome.h"
#include "Stamps.h"

namespace soak {

namespace {

constexpr unsigned overMs = 50;
constexpr unsigned tickMs = 20;  // one step of the system's tick count, which deadlines go by
constexpr unsigned recoveryMs = 1500;
/// Between two readings of one clock in two programs.
constexpr std::uint64_t clockUs = 20;
/// What the cache has may end so much later than it should: by steps of its clock.
constexpr std::uint64_t cacheSlackUs = 50000;
/// Longer than a thread of the load waits for an answer. (Who verifies is alone, so that its calls
/// are among those that have ended.)
constexpr std::uint64_t patientCallUs = 1000000;

template <class T>
void raise(std::atomic<T>& highest, T value) {
    T before = highest;
    while (before < value && !highest.compare_exchange_weak(before, value)) {
    }
}

}  // namespace

/// A call is several waits and hand-overs, each of which the machine can be late for; and a sample
/// of a few threads sees less than sixty-four of them meet.
unsigned Judge::allowanceMs(unsigned latenessMs, bool isBusy) const {
    return tickMs + (isBusy ? graceMs_ : 0) + 2 * latenessMs;
}

void Judge::callEnded(const std::string& where, const Limits& limits, std::uint64_t startUs,
                      bool ok) {
    const std::uint64_t endUs = nowUs();
    ++calls_;
    const unsigned cause = ok ? 0u : static_cast<unsigned>(qorcontrol::lastOutcome().cause);
    ++byCause_[std::min(cause, causes - 1)];
    expect(ok || cause != 0, where, "it failed without a cause");
    if (ok) raise(longestCallUs_, endUs - startUs);
    expect(!(ok && owesNothing && qorcontrol::lastOutcome().mayBelongToEarlier), where,
           "its answer is marked as perhaps an earlier request's, and QOR owed none");
    if (limits.isTimed) judgeTime(where, limits.waitMs, startUs, endUs);
}

void Judge::judgeTime(const std::string& where, unsigned waitMs, std::uint64_t startUs,
                      std::uint64_t endUs) {
    const auto tookMs = static_cast<unsigned>((endUs - startUs) / 1000);
    const int overrun = static_cast<int>(tookMs) - static_cast<int>(waitMs);
    raise(worstOverrunMs_, overrun);
    if (overrun <= static_cast<int>(overMs)) return;
    const unsigned late = lateness_.worstMs(startUs, endUs);
    raise(worstLatenessMs_, late);
    const bool isBusy = lateness_.isBusy(startUs, endUs);
    ++(isBusy ? lateOnBusy_ : late_);
    if (tookMs <= waitMs + overMs + allowanceMs(late, isBusy)) return;
    report_.breach(where, "it took " + std::to_string(tookMs) + " ms of " + std::to_string(waitMs) +
                              ", while the machine was " + std::to_string(late) + " ms late" +
                              (isBusy ? " and busy" : ""));
}

void Judge::beginCache(unsigned periodMs) {
    longestCallUs_ = 0;
    cacheUs_ = periodMs > 1 ? std::uint64_t{periodMs} * 500 : 0;
}

std::uint64_t Judge::oldestCachedUs() const {
    if (cacheUs_ == 0) return 0;
    return cacheUs_ + cacheSlackUs + std::max<std::uint64_t>(longestCallUs_, patientCallUs);
}

void Judge::stamp(const std::string& where, double value, unsigned number, std::uint64_t sinceUs) {
    ++values_;
    const Stamp stamp = Stamp::in(value);
    expect(stamp.number == number, where,
           "a wrong value: " + std::to_string(value) + " is of number " +
               std::to_string(stamp.number) + ", not " + std::to_string(number));
    const std::uint64_t now = nowUs();
    if (stamp.ageUs(now) <= now - sinceUs + clockUs + oldestCachedUs()) return;
    if (qorcontrol::lastOutcome().mayBelongToEarlier)
        ++marked_;
    else if (isStrict)
        report_.breach(where, "a stale value: QOR made it " +
                                  std::to_string(stamp.ageUs(now) - (now - sinceUs)) +
                                  " us before the request, and it is not marked");
}

void Judge::recovered(const std::string& where, std::uint64_t sinceUs) {
    const std::uint64_t endUs = nowUs();
    const auto tookMs = static_cast<unsigned>((endUs - sinceUs) / 1000);
    ++recoveries_;
    raise(worstRecoveryMs_, tookMs);
    const unsigned late = lateness_.worstMs(sinceUs, endUs);
    const bool isBusy = lateness_.isBusy(sinceUs, endUs);
    expect(tookMs <= recoveryMs + allowanceMs(late, isBusy), where,
           "no request worked within " + std::to_string(recoveryMs) +
               " ms after QOR could be reached, but after " + std::to_string(tookMs) +
               " ms, while the machine was " + std::to_string(late) + " ms late" +
               (isBusy ? " and busy" : ""));
}

std::string Judge::countsAsJson() const {
    std::string text =
        R"({"calls":)" + std::to_string(calls_) + R"(,"values":)" + std::to_string(values_) +
        R"(,"marked":)" + std::to_string(marked_) + R"(,"recoveries":)" +
        std::to_string(recoveries_) + R"(,"late":)" + std::to_string(late_) + R"(,"lateOnBusy":)" +
        std::to_string(lateOnBusy_) + R"(,"worstRecoveryMs":)" + std::to_string(worstRecoveryMs_) +
        R"(,"worstOverrunMs":)" + std::to_string(worstOverrunMs_) + R"(,"worstLatenessMs":)" +
        std::to_string(worstLatenessMs_) + R"(,"causes":[)";
    for (unsigned cause = 0; cause < causes; ++cause)
        text += (cause == 0 ? "" : ",") + std::to_string(byCause_[cause]);
    return text + "]}";
}

}  // namespace soak
