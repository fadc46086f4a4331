#include "Ledger.h"

#include <algorithm>

namespace simtime {
namespace {

/// No call takes longer, with what the cache tells behind it, whose answer can be marked.
constexpr Ms remembersMs = 60000;
/// So long after an answer has arrived its caller may still look at it.
constexpr Ms looksMs = 50;

Ms now() {
    return Machine::present().now();
}

bool has(const Topics& topics, const Topic& topic) {
    return std::find(topics.begin(), topics.end(), topic) != topics.end();
}

template <class All, class Each>
bool removeFrom(All& all, const Each& each) {
    const auto found = std::find(all.begin(), all.end(), each);
    if (found == all.end()) return false;
    all.erase(found);
    return true;
}

}  // namespace

void Ledger::begin() {
    accounts_.clear();
    for (Copy& copy : copies_) copy.end = std::min(copy.end, now());
}

void Ledger::openModel() {
    for (auto account = accounts_.begin(); account != accounts_.end();) {
        const bool isOfParams = account->first.kind >= Topic::description;
        account = isOfParams ? accounts_.erase(account) : std::next(account);
    }
}

void Ledger::take(std::uint32_t requestId, const Topics& topics, std::uint64_t known) {
    for (const Topic& topic : topics) {
        Account& account = accounts_[topic];
        if (!account.open.empty() || account.told > known) note(topic);
        account.open.push_back(requestId);
    }
}

void Ledger::doubt(const Topics& topics) {
    for (const Topic& topic : topics) note(topic);
}

void Ledger::refuse(std::uint32_t requestId, const Topics& topics, std::uint64_t place) {
    for (const Topic& topic : topics) {
        Account& account = accounts_[topic];
        removeFrom(account.open, requestId);
        account.told = place;
    }
}

void Ledger::tell(std::optional<std::uint32_t> named, const Topics& topics, std::uint64_t place) {
    for (const Topic& topic : topics) {
        Account& account = accounts_[topic];
        account.told = place;
        if (named) {
            // Once more, and somebody waits for other data of the same.
            if (!removeFrom(account.open, *named) && !account.open.empty()) note(topic);
        } else if (!account.open.empty()) {
            account.open.pop_front();
        }
    }
}

void Ledger::tellAgain(const Topics& topics, Ms made, std::uint64_t mark) {
    copies_.push_back({topics, made, mark, 0, never, never});
    forgetOld();
}

void Ledger::note(const Topic& topic) {
    doubts_.push_back({now(), topic});
    forgetOld();
}

void Ledger::forgetOld() {
    while (!doubts_.empty() && doubts_.front().moment + remembersMs < now()) doubts_.pop_front();
    while (!copies_.empty() && copies_.front().made + remembersMs < now()) copies_.pop_front();
}

bool Ledger::isDoubtful(const Topics& topics, Ms since) const {
    return std::any_of(doubts_.begin(), doubts_.end(), [&](const Doubt& doubt) {
        return doubt.moment >= since && has(topics, doubt.topic);
    });
}

bool Ledger::explains(const Topic& topic, Ms made, std::uint64_t call, Ms cachedMs) {
    return std::any_of(copies_.begin(), copies_.end(), [&](Copy& copy) {
        return copy.made == made && explains(copy, topic, call, cachedMs);
    });
}

bool Ledger::explains(const Topic& topic, std::uint64_t mark, std::uint64_t call) {
    return std::any_of(copies_.begin(), copies_.end(), [&](Copy& copy) {
        return copy.mark == mark && explains(copy, topic, call, 0);
    });
}

bool Ledger::explains(Copy& copy, const Topic& topic, std::uint64_t call, Ms cachedMs) {
    if (!has(copy.topics, topic)) return false;
    if (copy.call == call) return true;
    if (copy.call != 0) return cachedMs != 0 && now() <= copy.taken + cachedMs;
    if (copy.end != never && copy.end + looksMs < now()) return false;
    copy.call = call;
    copy.taken = now();
    return true;
}

}  // namespace simtime
