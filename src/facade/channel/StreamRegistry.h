#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/Guarded.h"
#include "facade/channel/HostQueues.h"

namespace channel {

/// What one host queue is to be filled with.
struct RepeatRead {
    std::vector<std::string> names;
    bool prepared = false;    ///< the agent has set QOR up to send these
    std::uint32_t epoch = 0;  ///< which QOR that was, in the agent's count
};

/// The host's queues that the agent is to fill with values.
class StreamRegistry {
public:
    using Registrations = std::map<ParamQueue*, RepeatRead>;

    /// The facade's: a queue that is there already gets the new names, not prepared.
    void add(ParamQueue* queue, const std::vector<std::string>& names);
    /// What was registered for it; empty if nothing was.
    std::optional<RepeatRead> remove(ParamQueue* queue);

    /// The agent's: a copy of all.
    Registrations all();
    /// How the preparation of one ended; false if the host has removed it meanwhile, which it may
    /// at any time.
    bool notePreparation(ParamQueue* queue, bool prepared, std::uint32_t epoch);

private:
    common::Guarded<Registrations> repeatReads_;
};

}  // namespace channel
