#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "facade/CmdData.h"
#include "facade/FacadeImpl.h"

/// One operation that waits for its answer within a time, as it differs from the others.
struct TimedOperation {
    using Impl = QorControlFacade::Impl;
    using Results = std::shared_ptr<Impl::CmdData>;

    /// How long it waits, seen from the caller's time-out.
    enum class Waits { twice, once, threeSeconds };

    const char* name;
    std::uint32_t kind;
    /// Calls it with inputs and outputs of its own.
    std::function<bool(QorControlFacade&, unsigned int timeoutMs)> call;
    /// The caller's time-out as the request tells it to the agent; empty: it does not.
    std::function<unsigned int(const Impl::CmdData&)> timeoutIn;
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
