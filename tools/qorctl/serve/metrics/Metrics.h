#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "serve/metrics/Figures.h"
#include "serve/rpc/Failure.h"

namespace qorctl::serve {

/// What the server has done since its start, for a person who looks and for a program that collects
/// figures over months. Every operation may be called from every thread; the lock is held for a
/// few additions or copies. What is kept is bounded whatever clients send: a method that there is
/// not counts as "other".
class Metrics {
public:
    using Clock = std::chrono::steady_clock;

    /// @param methods  names of all that there are.
    /// @param now  for tests.
    explicit Metrics(const std::vector<std::string>& methods,
                     std::function<Clock::time_point()> now = &Clock::now);
    Metrics(const Metrics&) = delete;
    Metrics& operator=(const Metrics&) = delete;

    /// A request was carried out.
    /// @param cause  name of the cause or of the error, one of a fixed set; empty: it has worked.
    /// @param sentence, check  what a person is told of a failure, in UTF-8.
    void finished(const std::string& method, const std::string& cause, double seconds,
                  const std::string& sentence = {}, const std::string& check = {});
    /// A request was answered with an error without being carried out.
    void refused(const std::string& method, RpcCode code);
    void streamValues(std::uint64_t count);
    void streamMissed(std::uint64_t count);
    /// The ECU is online again after it was lost.
    void reconnected();
    void httpAnswered(int status);

    /// All figures in Prometheus' text format 0.0.4.
    std::string prometheusText(const Gauges& gauges) const;

    /// `requests`, `failures`, `requestsByMethod`, `failuresByCause`, `lastFailures` and `pingMs`
    /// of the method getServerStatus. Refusals are failures too, but `lastFailures` has only what
    /// was carried out: a client's own mistakes do not push out what happened to QOR.
    nlohmann::json snapshot() const;

private:
    MethodFigures& of(const std::string& method);
    Figures figures() const;

    const std::function<Clock::time_point()> now_;
    mutable std::mutex mutex_;
    Figures figures_;  // guarded by mutex_
};

/// Why a request was refused, as it stands in the figures.
const char* nameOf(RpcCode code);

}  // namespace qorctl::serve
