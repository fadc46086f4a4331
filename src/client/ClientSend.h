#pragma once

#include "client/ClientExternalOperating.h"
#include "common/Clock.h"
#include "common/Pump.h"

// The two steps that all operations of the client are made of. Only the client's own source files
// include this.

template <class Command>
bool ClientExternalOperating::send(const typename Command::Payload& payload,
                                   unsigned int timeoutMs) {
    return transport_->send(std::make_unique<Command>(payload), timeoutMs);
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
