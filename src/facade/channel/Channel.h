#pragma once

#include <atomic>
#include <string>
#include <utility>

#include "facade/channel/AgentLife.h"
#include "facade/channel/Backlog.h"
#include "facade/channel/ConnectProgress.h"
#include "facade/channel/ExecutablePath.h"
#include "facade/channel/MessageBoxDesk.h"
#include "facade/channel/ProtocolCmd.h"
#include "facade/channel/QorContact.h"
#include "facade/channel/StreamRegistry.h"
#include "facade/channel/ValueCache.h"
#include "qorcontrol/ThreadSafeQueue.h"

namespace channel {

/// What a facade and its agent share, and nothing else. The facade, the agent thread and every
/// running operation hold a share of it: an agent that was let go, or an operation that outlives
/// the facade, touches nothing that is gone.
///
/// Each member looks after itself: it is atomic, or locks itself for a few copies, never across a
/// wait or a call into another folder, and no thread holds two of these locks at once.
struct Channel {
    static constexpr unsigned int commandSlots = 10;

    Channel(std::string settings, unsigned int readPeriodMs)
        : settingsPath(std::move(settings)), commandQueue(commandSlots), values(readPeriodMs) {}

    // From the facade to the agent.
    const std::string settingsPath;  ///< as the host passed it
    ThreadSafeQueue<ProtocolCmd> commandQueue;
    Backlog backlog;
    /// Whether calls with a time-out see, while they wait, that nobody is left to answer them. For
    /// who puts another interface on the facade; hosts of the class itself wait their whole time.
    std::atomic<bool> areWaitsWatchful{false};
    StreamRegistry streams;
    std::atomic<bool> isTcpNoDelay{false};  ///< see setTcpNoDelay

    // From the agent to the facade.
    ExecutablePath executable;
    QorContact contact;
    ConnectProgress progress;

    // Both ways.
    ValueCache values;
    AgentLife agent;
    MessageBoxDesk messageBoxes;
};

}  // namespace channel
