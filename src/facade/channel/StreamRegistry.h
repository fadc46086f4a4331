#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Guarded.h"
#include "facade/channel/HostQueues.h"
#include "facade/channel/StreamSinks.h"

namespace channel {

/// What one host queue, or one sink, is to be filled with.
struct RepeatRead {
    ParamQueue* queue = nullptr;      ///< the host's; null for a sink
    std::shared_ptr<ValueSink> sink;  ///< null for a queue
    std::vector<std::string> names;
    bool prepared = false;           ///< the agent has set QOR up to send these
    std::uint32_t epoch = 0;         ///< which QOR that was, in the agent's count
    std::vector<std::string> asked;  ///< those it has been asked for then, which a stop takes back
};

/// The host's queues, and the sinks, that the agent is to fill with values. Each is known by its
/// address.
class StreamRegistry {
public:
    using Registrations = std::map<const void*, RepeatRead>;

    /// The facade's: one that is there already gets the new names, not prepared.
    void add(ParamQueue* queue, const std::vector<std::string>& names);
    void add(std::shared_ptr<ValueSink> sink, const std::vector<std::string>& names);
    /// What was registered for it; empty if nothing was.
    std::optional<RepeatRead> remove(const void* target);

    /// The agent's: a copy of all.
    Registrations all();
    /// How the preparation of one ended, and for which names; false if the host has removed it
    /// meanwhile, which it may at any time. Another one in its place passes for prepared.
    bool notePreparation(const void* target, bool prepared, std::uint32_t epoch,
                         const std::vector<std::string>& asked);

private:
    common::Guarded<Registrations> repeatReads_;
};

}  // namespace channel
