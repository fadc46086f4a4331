#pragma once

#include <atomic>
#include <utility>

#include "transport/IExternalCommandFactory.h"

/// Whether a command that waits for its turn may still leave, and how far it has come. Shared by
/// its sender and the thread that sends it.
class Departure {
public:
    explicit Departure(IExternalCommandFactory::Permit permit) : permit_(std::move(permit)) {}

    /// The sender has given up: unless the command has left already, it never will.
    void cancel() noexcept { cancelled_ = true; }

    bool isCancelled() const noexcept { return cancelled_; }

    /// Asks the permit: only for what leaves then.
    bool mayLeave() const { return permit_ == nullptr || permit_(); }

    /// Said by the thread that sends it.
    void note(Delivery state) noexcept { state_ = state; }
    Delivery state() const noexcept { return state_; }

private:
    const IExternalCommandFactory::Permit permit_;
    std::atomic<bool> cancelled_{false};
    std::atomic<Delivery> state_{Delivery::notBegun};
};
