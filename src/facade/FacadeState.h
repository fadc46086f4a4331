#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "facade/channel/Channel.h"
#include "qorcontrol/HostInterfaces.h"

/// What a facade keeps. Operations take what they need of it at their beginning (see Call), for it
/// is gone with the facade while they may still run.
struct FacadeState {
    FacadeState(std::string settingsPath, const EolLog* log, unsigned int readPeriodMs)
        : eolLog(log),
          channel(std::make_shared<channel::Channel>(std::move(settingsPath), readPeriodMs)) {}

    const EolLog* const eolLog;  ///< the host's; may be null
    const std::shared_ptr<channel::Channel> channel;
    /// True while a `connect` waits, which holds a share of it.
    const std::shared_ptr<std::atomic<bool>> connecting =
        std::make_shared<std::atomic<bool>>(false);
};
