#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/ParameterStore.h"
#include "script/Effect.h"

namespace simulator {

/// What carrying out a request came to.
struct Outcome {
    Refusal refusal;
    /// Payload of an answer that has the request's id; without one the request is just
    /// acknowledged.
    std::optional<std::string> answer;
    /// The client needs the answer's content. Otherwise an acknowledgement does as well.
    bool answerIsData = false;
    /// The ECU takes this long; the request is acknowledged before.
    std::uint32_t answerDelayMs = 0;
    std::vector<TimedEffect> then;
    std::string note;  ///< for the log

    static Outcome done() { return {}; }
    static Outcome refused(std::string reason);
    static Outcome data(std::string payload);
    /// Done, and the answer shows what it came to; or refused.
    static Outcome unlessRefused(Refusal refusal, std::string payload);
};

}  // namespace simulator
