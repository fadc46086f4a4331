#pragma once

#include <utility>

#include "client/ClientExternalOperating.h"
#include "common/Deadline.h"
#include "common/Pump.h"

// The steps that all operations of the client are made of. Only the client's own source files
// include this.

namespace clientsend {

/// How long resolving a name may take where the caller gives no time of its own.
constexpr unsigned int resolveMs = 400;

/// A time-out with some extra time for QOR; "no limit" stays what it is.
constexpr unsigned int withExtra(unsigned int timeoutMs, unsigned int extraMs) {
    return timeoutMs == common::noLimitMs ? timeoutMs : timeoutMs + extraMs;
}

}  // namespace clientsend

/// What the client waits for, to the end of the block: it does not make room for anything else.
class ClientExternalOperating::Awaiting {
public:
    template <class What>
    Awaiting(common::Guarded<ClientState>& state, const What& what) : state_(state) {
        state_.lock()->params.await(what);
    }
    ~Awaiting() { state_.lock()->params.awaitNothing(); }
    Awaiting(const Awaiting&) = delete;
    Awaiting& operator=(const Awaiting&) = delete;

private:
    common::Guarded<ClientState>& state_;
};

template <class Find, class T>
bool ClientExternalOperating::copyOut(Epoch epoch, Find entry, T& copy) {
    const auto state = state_.lock();
    const T* const found = state->epoch == epoch ? entry(state->params) : nullptr;
    if (found != nullptr) copy = *found;
    return found != nullptr;
}

template <class Command>
bool ClientExternalOperating::send(typename Command::Payload payload, unsigned int timeoutMs,
                                   std::optional<Epoch> epoch) {
    return transport_->sendIf(permit(timeoutMs, epoch),
                              std::make_unique<Command>(std::move(payload)), timeoutMs);
}

template <class Condition>
bool ClientExternalOperating::waitUntil(unsigned int timeoutMs, Condition isThere) {
    const auto deadline = common::Deadline::after(common::now(), timeoutMs);
    while (operating_) {
        common::pumpCopyData();
        if (isThere()) return true;
        if (deadline.hasPassed()) return false;
    }
    return false;
}
