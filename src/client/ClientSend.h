#pragma once

#include <utility>

#include "client/ClientExternalOperating.h"
#include "common/Clock.h"
#include "common/Pump.h"

// The steps that all operations of the client are made of. Only the client's own source files
// include this.

namespace clientsend {

/// How long resolving a name may take where the caller gives no time of its own.
constexpr unsigned int resolveMs = 400;

/// Copies the entry of `key` out, if there is one.
template <class Map, class Key>
bool copyEntry(const Map& map, const Key& key, typename Map::mapped_type& copy) {
    const auto found = map.find(key);
    if (found == map.end()) return false;
    copy = found->second;
    return true;
}

/// A time-out with some extra time for QOR; "no limit" stays what it is.
constexpr unsigned int withExtra(unsigned int timeoutMs, unsigned int extraMs) {
    return timeoutMs == IExternalCommandFactory::noLimit ? timeoutMs : timeoutMs + extraMs;
}

}  // namespace clientsend

template <class Command>
bool ClientExternalOperating::send(typename Command::Payload payload, unsigned int timeoutMs) {
    return transport_->send(std::make_unique<Command>(std::move(payload)), timeoutMs);
}

template <class Condition>
bool ClientExternalOperating::waitUntil(unsigned int timeoutMs, Condition isThere) {
    const std::uint32_t start = common::tickCount();
    while (operating_) {
        common::pumpCopyData();
        if (isThere()) return true;
        if (timeoutMs != IExternalCommandFactory::noLimit &&
            common::hasPassed(common::tickCount(), start, timeoutMs))
            return false;
    }
    return false;
}
