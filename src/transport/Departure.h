#pragma once

#include <atomic>
#include <utility>

#include "transport/IExternalCommandFactory.h"

/// Whether a command that waits for its turn may still leave. Shared by its sender and the thread
/// that sends it.
class Departure {
public:
    explicit Departure(IExternalCommandFactory::Permit permit) : permit_(std::move(permit)) {}

    /// The sender has given up: unless the command has left already, it never will.
    void cancel() noexcept { cancelled_ = true; }

    bool mayLeave() const { return !cancelled_ && (permit_ == nullptr || permit_()); }

private:
    const IExternalCommandFactory::Permit permit_;
    std::atomic<bool> cancelled_{false};
};
