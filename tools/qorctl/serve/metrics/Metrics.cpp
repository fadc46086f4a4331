#include "serve/metrics/Metrics.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <utility>

#include "serve/metrics/PrometheusText.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using Guard = std::lock_guard<std::mutex>;

constexpr const char* anyOther = "other";
constexpr std::size_t keptFailures = 20;
constexpr std::size_t keptBytes = 500;  // of a text that may quote what a client has sent
constexpr double msPerS = 1000;

/// Never half a character of UTF-8, which would be no JSON.
std::string beginningOf(const std::string& text) {
    if (text.size() <= keptBytes) return text;
    std::size_t length = keptBytes;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0u) == 0x80u) --length;
    return text.substr(0, length) + "...";
}

json jsonOf(const MethodFigures& method) {
    const std::uint64_t carriedOut = method.durations.count();
    const std::uint64_t refused = sumOf(method.refusals);
    json all = {{"requests", carriedOut + refused},
                {"failures", sumOf(method.failures) + refused},
                {"lastMs", nullptr},
                {"meanMs", nullptr}};
    if (carriedOut > 0) {
        all["lastMs"] = method.lastS * msPerS;
        all["meanMs"] = method.durations.sum() * msPerS / static_cast<double>(carriedOut);
    }
    return all;
}

json jsonOf(const std::deque<FailedRequest>& failures, Metrics::Clock::time_point now) {
    json all = json::array();
    for (const FailedRequest& each : failures) {
        const auto age = std::chrono::duration_cast<std::chrono::milliseconds>(now - each.when);
        all.push_back({{"timeMs", age.count()},
                       {"method", each.method},
                       {"name", each.cause},
                       {"sentence", each.sentence},
                       {"check", each.check}});
    }
    return all;
}

}  // namespace

Metrics::Metrics(const std::vector<std::string>& methods, std::function<Clock::time_point()> now)
    : now_(std::move(now)) {
    for (const std::string& each : methods) figures_.methods[each];
    figures_.methods[anyOther];
}

MethodFigures& Metrics::of(const std::string& method) {
    const auto found = figures_.methods.find(method);
    return found != figures_.methods.end() ? found->second : figures_.methods[anyOther];
}

void Metrics::finished(const std::string& method, const std::string& cause, double seconds,
                       const std::string& sentence, const std::string& check) {
    const bool hasWorked = cause.empty();
    FailedRequest failed;
    if (!hasWorked)
        failed = {now_(), beginningOf(method), cause, beginningOf(sentence), beginningOf(check)};
    const Guard guard(mutex_);
    MethodFigures& own = of(method);
    own.durations.add(seconds);
    own.lastS = seconds;
    if (method == "pingQor")
        figures_.pingS = hasWorked ? std::optional<double>(seconds) : std::nullopt;
    if (hasWorked) return;
    ++own.failures[cause];
    figures_.lastFailures.push_front(std::move(failed));
    if (figures_.lastFailures.size() > keptFailures) figures_.lastFailures.pop_back();
}

void Metrics::refused(const std::string& method, RpcCode code) {
    const Guard guard(mutex_);
    ++of(method).refusals[nameOf(code)];
}

void Metrics::streamValues(std::uint64_t count) {
    const Guard guard(mutex_);
    figures_.streamValues += count;
}

void Metrics::streamMissed(std::uint64_t count) {
    const Guard guard(mutex_);
    figures_.streamMissed += count;
}

void Metrics::reconnected() {
    const Guard guard(mutex_);
    ++figures_.reconnects;
}

void Metrics::httpAnswered(int status) {
    constexpr int known = 1000;  // of three digits
    const Guard guard(mutex_);
    ++figures_.httpResponses[status >= 0 && status < known ? status : 0];
}

Figures Metrics::figures() const {
    const Guard guard(mutex_);
    return figures_;
}

std::string Metrics::prometheusText(const Gauges& gauges) const {
    return prometheusTextOf(figures(), gauges);
}

json Metrics::snapshot() const {
    const Figures present = figures();
    std::uint64_t requests = 0;
    Counts failures;
    json methods = json::object();
    for (const auto& [name, method] : present.methods) {
        const std::uint64_t own = method.durations.count() + sumOf(method.refusals);
        requests += own;
        for (const Counts& counts : {method.failures, method.refusals})
            for (const auto& [cause, count] : counts) failures[cause] += count;
        if (own > 0) methods[name] = jsonOf(method);
    }
    json all = {{"requests", requests},
                {"failures", sumOf(failures)},
                {"requestsByMethod", std::move(methods)},
                {"failuresByCause", failures},
                {"lastFailures", jsonOf(present.lastFailures, now_())},
                {"pingMs", nullptr}};
    if (present.pingS) all["pingMs"] = *present.pingS * msPerS;
    return all;
}

const char* nameOf(RpcCode code) {
    switch (code) {
        case RpcCode::parseError:
            return "parseError";
        case RpcCode::invalidRequest:
            return "invalidRequest";
        case RpcCode::methodNotFound:
            return "methodNotFound";
        case RpcCode::invalidParams:
            return "invalidParams";
        case RpcCode::failed:
            return "failed";
        case RpcCode::busy:
            return "busy";
        case RpcCode::readOnly:
            return "readOnly";
        case RpcCode::ending:
            return "ending";
        case RpcCode::taken:
            return "taken";
        case RpcCode::refused:
            return "forbidden";  // "refused" is what QOR itself does
        case RpcCode::internalError:
            break;
    }
    return "internalError";
}

}  // namespace qorctl::serve
