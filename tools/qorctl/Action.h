#pragma once

#include <functional>

namespace qorctl {

/// What a command does once its command line is understood; returns the exit code.
using Action = std::function<int()>;

/// Exit codes.
constexpr int exitSuccess = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;
constexpr int exitWouldNotWork = 3;  ///< of the doctor
/// An actuator may still be under direct control, whatever else happened.
constexpr int exitNotGivenBack = 4;

/// Another program talks to that QOR.
constexpr int exitOccupied = 5;

}  // namespace qorctl
