#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "facade/channel/Channel.h"
#include "facade/channel/ProtocolCmd.h"

/// One operation that waits for its answer within a time, as it differs from the others.
struct TimedOperation {
    using Channel = channel::Channel;
    using Results = std::shared_ptr<channel::CmdData>;

    /// How long it waits, seen from the caller's time-out.
    enum class Waits { twice, once, threeSeconds };

    const char* name;
    channel::Kind kind;
    /// Calls it with inputs and outputs of its own.
    std::function<bool(QorControlFacade&, unsigned int timeoutMs)> call;
    /// The caller's time-out as the request tells it to the agent; empty: it does not.
    std::function<unsigned int(const channel::CmdData&)> timeoutIn;
    /// What a success carries; empty: nothing.
    std::function<Results()> results;
    /// What is written when the agent fails it after 37 ms.
    std::vector<std::string> failureTrace;
    std::vector<std::string> failureLog;
    Waits waits = Waits::twice;
};

/// Failures name the operation instead of its bytes.
inline void PrintTo(const TimedOperation& operation, std::ostream* out) {
    *out << operation.name;
}

const std::vector<TimedOperation>& timedOperations();
