#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "client/Owed.h"

struct ClientState;

/// What one command makes QOR owe. Shared with the thread that sends it, which may be at it still
/// when the sender has given up. All under the client's lock.
class ILoan {
public:
    virtual ~ILoan() = default;
    /// QOR has refused the command and will send no data; only the first time counts.
    virtual void giveBack(ClientState& state) = 0;
    /// Whether all the data that has come last names this very command.
    virtual bool isCertain() const = 0;
    /// Whether data has come that cannot be its own: before it left, or naming another command.
    virtual bool hasMetForeign() const = 0;

protected:
    ILoan() = default;
    ILoan(const ILoan&) = delete;
    ILoan& operator=(const ILoan&) = delete;
};

template <class Key>
class Loan final : public ILoan {
public:
    using Debts = Owed<Key> ClientState::*;

    /// The keys in their order, each once.
    Loan(Debts debts, std::vector<Key> keys)
        : debts_(debts), keys_(std::move(keys)), isOwn_(keys_.size(), false) {
        tickets_.reserve(keys_.size());
    }

    /// The command leaves.
    void take(ClientState& state) {
        Owed<Key>& all = state.*debts_;
        for (const Key& key : keys_)
            if (all.isOwed(key)) isBehindAnother_ = true;
        for (const Key& key : keys_) tickets_.push_back(all.add(key));
        hasLeft_ = true;
    }
    void giveBack(ClientState& state) override {
        for (std::size_t i = 0; i < tickets_.size(); ++i)
            (state.*debts_).cancel(keys_[i], tickets_[i]);
        tickets_.clear();
    }

    /// Data has come that names this command; false if that is not about one of its keys.
    bool settle(ClientState& state, const Key& key) {
        const std::size_t at = placeOf(key);
        if (at == keys_.size()) return false;
        if (at < tickets_.size()) {
            (state.*debts_).cancel(key, tickets_[at]);
            tickets_[at] = {};  // which is of no debt
        }
        return true;
    }

    /// Data has come, whosever it is: of this command, of another one, or nobody can tell.
    enum class Names { own, another, none };
    void noteData(const Key& key, Names names) {
        const std::size_t at = placeOf(key);
        if (at == keys_.size()) return;
        isOwn_[at] = names == Names::own;
        if (!hasLeft_ || names == Names::another) hasMetForeign_ = true;
    }
    bool isCertain() const override {
        return std::find(isOwn_.begin(), isOwn_.end(), false) == isOwn_.end();
    }

    bool hasMetForeign() const override { return hasMetForeign_; }

    bool isOf(Debts debts) const { return debts_ == debts; }
    /// Whether it takes no more memory than one that is kept may take.
    bool isSmall() const {
        return keys_.size() <= Owed<Key>::maxKeys &&
               std::all_of(keys_.begin(), keys_.end(),
                           [](const Key& key) { return Owed<Key>::isShort(key); });
    }
    bool isBehindAnother() const { return isBehindAnother_; }

private:
    /// Behind the end if there is none.
    std::size_t placeOf(const Key& key) const {
        const auto found = std::lower_bound(keys_.begin(), keys_.end(), key);
        if (found == keys_.end() || *found != key) return keys_.size();
        return static_cast<std::size_t>(found - keys_.begin());
    }

    const Debts debts_;
    const std::vector<Key> keys_;
    std::vector<bool> isOwn_;
    std::vector<typename Owed<Key>::Ticket> tickets_;  // none, or one per key
    bool isBehindAnother_ = false;
    bool hasLeft_ = false;
    bool hasMetForeign_ = false;
};

/// The loan of this type and these debts; null if it is another one, or none.
template <class Key>
Loan<Key>* loanOf(ILoan* loan, Owed<Key> ClientState::*debts) {
    auto* const typed = dynamic_cast<Loan<Key>*>(loan);
    return typed != nullptr && typed->isOf(debts) ? typed : nullptr;
}

/// The loans of the latest commands, by request id: a refusal may come when the sender waits no
/// longer, and data that names its request may come then, and more than once. No more than
/// `maxLoans` are known, the newest; what QOR refuses of older ones stays owed, and data that names
/// one of them counts like data that names none.
class Loans {
public:
    static constexpr std::size_t maxLoans = 100;

    void keep(std::uint32_t requestId, std::uint32_t commandId, std::shared_ptr<ILoan> loan) {
        loans_.push_front({requestId, commandId, std::move(loan)});
        if (loans_.size() > maxLoans) loans_.pop_back();
    }

    /// The kind of the command with that id; nothing if it is not known.
    std::optional<std::uint32_t> kindOf(std::uint32_t requestId) const {
        const Kept* const kept = find(requestId);
        return kept == nullptr ? std::nullopt : std::optional<std::uint32_t>(kept->commandId);
    }

    /// The request that data names has got it; false if that is not known.
    template <class Key>
    bool settle(ClientState& state, std::uint32_t requestId, Owed<Key> ClientState::*debts,
                const Key& key) const {
        const Kept* const kept = find(requestId);
        Loan<Key>* const loan = kept == nullptr ? nullptr : loanOf(kept->loan.get(), debts);
        return loan != nullptr && loan->settle(state, key);
    }

    /// QOR has refused the request.
    void giveBack(ClientState& state, std::uint32_t requestId) const {
        if (const Kept* const kept = find(requestId)) kept->loan->giveBack(state);
    }

private:
    struct Kept {
        std::uint32_t requestId;
        std::uint32_t commandId;
        std::shared_ptr<ILoan> loan;
    };

    const Kept* find(std::uint32_t requestId) const {
        for (const Kept& kept : loans_)
            if (kept.requestId == requestId) return &kept;
        return nullptr;
    }

    std::deque<Kept> loans_;  // newest first
};
