#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "facade/channel/StreamSinks.h"
#include "facade/FacadeState.h"

/// Streams into sinks, for the interfaces that the library puts on the facade; as the operations of
/// that name do it with queues.
namespace sinkstreams {

void startParamRead(const FacadeState& state, std::shared_ptr<channel::ValueSink> sink,
                    const std::vector<std::string>& names);
/// Without waiting for the agent.
bool stopParamRead(const FacadeState& state, const channel::ValueSink* sink);

// These wait until the agent has carried them out, without a time limit: only then it is certain
// that they were not pushed out of the queue.
bool stopParamReadAndWait(const FacadeState& state, const channel::ValueSink* sink);
bool startDtcRead(const FacadeState& state, std::shared_ptr<channel::DtcSink> sink,
                  unsigned int timeoutMs, unsigned int periodMs);
bool stopDtcRead(const FacadeState& state);

}  // namespace sinkstreams
