#pragma once

#include <algorithm>

#include "common/SlicedWait.h"
#include "facade/channel/AgentLife.h"

namespace sinkstreams {

/// So often a reader looks whether there still is somebody who sends anything.
constexpr unsigned int lookMs = 50;

/// Lets `read` wait, given a time, until it has found something (true) or the time has passed, or
/// until it has found nothing and the agent has ended. `agent`: null if nobody knows of it any
/// more.
template <class Read>
void readWithin(unsigned int timeoutMs, const channel::AgentLife* agent, Read&& read) {
    common::SlicedWait wait(timeoutMs);
    do {
        if (read(std::min(wait.sliceMs(), lookMs))) return;
        if (agent == nullptr || agent->isOperating()) continue;
        read(0u);  // what came at the last moment
        return;
    } while (wait.goesOn());
}

}  // namespace sinkstreams
