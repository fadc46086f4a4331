#include <fmt/format.h>

#include <chrono>
#include <thread>

#include "demo/Tour.h"
#include "Interrupt.h"

namespace qorctl {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

const char* const written = "IdleSpeedTarget";
constexpr double writtenStep = 25.0;
const char* const cached = "EngineSpeed";

}  // namespace

Outcome Tour::writeAndRestore() {
    CallNotes calls;
    std::vector<double> before;
    if (!read(written, before, calls)) return calls.failureOfNames(notRead);
    const double value = before.front() + writtenStep;
    Outcome change = writeAndReadBack(written, value, calls);
    // Also after a failure and after Ctrl-C: what was written may have arrived.
    const Outcome restore = writeAndReadBack(written, before.front(), calls);
    results_["write"] = {{"name", written},
                         {"before", before.front()},
                         {"written", value},
                         {"changed", change.ok},
                         {"restored", restore.ok}};
    if (!change.ok) return change;
    if (!restore.ok) return {false, "not restored: " + restore.text, restore.told};
    return calls.success(fmt::format("{}: {} -> {} -> {} {}", written, before.front(), value,
                                     before.front(), descriptions_.unitOf(written)));
}

Outcome Tour::writeAndReadBack(const std::string& name, double value, CallNotes& calls) {
    if (!calls.note(facade_.setParamData(name, {value}, {}, {}, timeoutMs_)))
        return calls.failure(fmt::format("{} := {} refused", name, value));
    // Until then the library would answer with what was just written.
    std::this_thread::sleep_for(std::chrono::milliseconds(session_.staleAfterMs()));
    std::vector<double> values;
    if (!read(name, values, calls)) return calls.failureOfNames("not read back");
    if (values.front() != value)
        return calls.failure(
            fmt::format("{} reads {} after {} was written", name, values.front(), value));
    return calls.success();
}

Outcome Tour::measureCache() {
    if (!interrupt::sleepMs(session_.staleAfterMs()))
        return Outcome::failure("cancelled with Ctrl-C");
    std::vector<double> asked;
    const Clock::time_point start = Clock::now();
    const bool hasAnswered = facade_.getParamData(cached, asked, timeoutMs_);
    const Microseconds askedTime = Clock::now() - start;
    CallNotes calls;
    if (!calls.note(hasAnswered && !asked.empty(), cached)) return calls.failureOfNames(notRead);

    // Well within the half period in which the value is fresh.
    const auto span = std::chrono::milliseconds(session_.options().refreshMs / 8);
    const Clock::time_point cacheStart = Clock::now();
    unsigned int reads = 0;
    std::vector<double> values;
    do {
        // Noted only where it matters: that takes time, too.
        const bool worked = facade_.getParamData(cached, values, timeoutMs_);
        if (!worked || values != asked) {
            calls.note(worked);
            return calls.failure(fmt::format("cached read {} differs", reads + 1));
        }
        ++reads;
    } while (Clock::now() - cacheStart < span);
    const double cachedUs = Microseconds(Clock::now() - cacheStart).count() / reads;
    results_["cache"] = {{"name", cached},
                         {"askedUs", askedTime.count()},
                         {"cachedUs", cachedUs},
                         {"cachedReads", reads}};
    if (cachedUs >= askedTime.count()) return calls.failure("the cache is no faster than QOR");
    return calls.success(fmt::format("QOR {:.0f} us, cache {:.2f} us ({} reads)", askedTime.count(),
                                     cachedUs, reads));
}

}  // namespace qorctl
