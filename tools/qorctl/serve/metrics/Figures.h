#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "serve/metrics/Histogram.h"

namespace qorctl::serve {

/// What is as it is at the moment: whoever asks for the figures says it.
struct Gauges {
    std::size_t clients = 0;
    std::size_t streams = 0;
    std::size_t waiting = 0;  ///< requests that wait for their turn
    std::size_t heldActuators = 0;
    bool isEcuOnline = false;
    bool isConnecting = false;
    double uptimeS = 0;
};

using Counts = std::map<std::string, std::uint64_t>;
inline std::uint64_t sumOf(const Counts& counts) {
    std::uint64_t sum = 0;
    for (const auto& [name, count] : counts) sum += count;
    return sum;
}

/// What has become of the requests for one method.
struct MethodFigures {
    Histogram durations;  ///< of all that were carried out, failed ones too
    double lastS = 0;     ///< of the last one
    Counts failures;      ///< by cause, of what was carried out
    Counts refusals;      ///< by reason
};

/// What a person is told of a request that has failed.
struct FailedRequest {
    std::chrono::steady_clock::time_point when;
    std::string method;
    std::string cause;
    std::string sentence;
    std::string check;
};

/// All that is counted. A plain record.
struct Figures {
    std::map<std::string, MethodFigures> methods;  ///< each that there is, and "other"
    std::deque<FailedRequest> lastFailures;        ///< the newest first
    std::uint64_t streamValues = 0;
    std::uint64_t streamMissed = 0;
    std::uint64_t reconnects = 0;
    std::map<int, std::uint64_t> httpResponses;  ///< by status
    std::optional<double> pingS;                 ///< none: the last ping has failed
};

}  // namespace qorctl::serve
