#pragma once

#include <utility>

#include "client/ClientExternalOperating.h"
#include "client/Loans.h"
#include "common/Deadline.h"
#include "common/Pump.h"

// The steps that all operations of the client are made of. Only the client's own source files
// include this.

namespace clientsend {

/// How long resolving a name may take where the caller gives no time of its own.
constexpr unsigned int resolveMs = 400;
/// So often a wait looks around though nothing has been told.
constexpr unsigned int lookMs = 10;

/// A time-out with some extra time for QOR; "no limit" stays what it is.
constexpr unsigned int withExtra(unsigned int timeoutMs, unsigned int extraMs) {
    return timeoutMs == common::noLimitMs ? timeoutMs : timeoutMs + extraMs;
}

/// QOR knows other parameters from now on, and what it owes of the old ones has lost its meaning.
inline void beginEpoch(ClientState& state) {
    ++state.epoch;
    state.params.clear();
    state.ecuOnline = false;  // until it is said again
    state.owedDescriptions.clear();
    state.owedValues.clear();
    state.owedSamples.clear();
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
bool ClientExternalOperating::copyOut(const ClientState& state, Epoch epoch, Find entry, T& copy) {
    const T* const found = state.epoch == epoch ? entry(state.params) : nullptr;
    if (found != nullptr) copy = *found;
    return found != nullptr;
}

template <class Command>
bool ClientExternalOperating::send(typename Command::Payload payload, unsigned int timeoutMs,
                                   std::optional<Epoch> epoch) {
    beginSend();
    return endSend(transport_->sendIf(permit(timeoutMs, epoch),
                                      std::make_unique<Command>(std::move(payload)), timeoutMs));
}

template <class Command, class Key, class Forget>
bool ClientExternalOperating::ask(typename Command::Payload payload, unsigned int timeoutMs,
                                  Owed<Key> ClientState::*owed, const std::vector<Key>& keys,
                                  Forget forget, std::optional<Epoch> epoch) {
    const auto loan = std::make_shared<Loan<Key>>(owed, keys);
    auto command = std::make_unique<Command>(std::move(payload));
    const std::uint32_t requestId = command->requestId();
    const auto leftIn = std::make_shared<Epoch>(this->epoch());
    // Counted in the moment in which it leaves: it is the QOR that gets it which owes, and its data
    // cannot come before.
    const auto leaves = [this, loan, leftIn, requestId, mayLeave = permit(timeoutMs, epoch)] {
        if (mayLeave != nullptr && !mayLeave()) return false;
        const auto state = state_.lock();
        loan->take(*state);
        *leftIn = state->epoch;
        if (loan->isSmall()) state->loans.keep(requestId, Command::id, loan);
        return true;
    };
    beginSend();
    {
        const auto state = state_.lock();
        forget(*state);
        state->asked = {requestId, Command::id, loan};
    }
    const Delivery delivery = transport_->sendIf(leaves, std::move(command), timeoutMs);
    {
        const auto state = state_.lock();
        sentIn_ = *leftIn;  // the send itself may have met a new QOR
        wasMarked_ = verdict_.mayBelongToEarlier;
        if (loan->isBehindAnother()) verdict_.mayBelongToEarlier = true;
        const bool isUndone = delivery == Delivery::refused || delivery == Delivery::forbidden;
        if (isUndone) loan->giveBack(*state);
    }
    return endSend(delivery);
}

template <class Condition>
bool ClientExternalOperating::waitUntil(unsigned int timeoutMs, Condition isThere) {
    const auto deadline = common::Deadline::after(common::now(), timeoutMs);
    while (operating_) {
        common::pumpCopyData();
        if (isThere()) return true;
        if (deadline.hasPassed()) return false;
        const common::News::Awaiting news(handled_);
        if (isThere()) return true;
        transport_->awaitInput(news.event(), deadline.sliceMs(clientsend::lookMs));
    }
    return false;
}

template <class Condition>
bool ClientExternalOperating::awaitData(unsigned int timeoutMs, Condition isThere) {
    bool isCertain = false;
    bool isDoubtful = false;
    const auto take = [&] {
        // In one lock with the data: what comes behind it is another matter.
        const auto state = state_.lock();
        if (!isThere(*state)) return false;
        const ILoan* const loan = state->asked.loan.get();
        isCertain = loan != nullptr && loan->isCertain();
        isDoubtful = loan != nullptr && loan->hasMetForeign();
        return true;
    };
    if (!waitUntil(timeoutMs, take)) return failForLackOfData();
    if (isCertain)
        verdict_.mayBelongToEarlier = wasMarked_;
    else if (isDoubtful)
        verdict_.mayBelongToEarlier = true;
    return true;
}
