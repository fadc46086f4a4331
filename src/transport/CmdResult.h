#pragma once

#include <cstdint>

#include "qorcontrol/ThreadSafeQueue.h"

/// How a request that went out over the socket has ended.
struct CmdResult {
    static constexpr std::uint32_t failure = 0;
    static constexpr std::uint32_t success = 1;

    std::uint32_t requestId = 0;
    std::uint32_t status = failure;
};

using CmdResultQueue = ThreadSafeQueue<CmdResult>;
