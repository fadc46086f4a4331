#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
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

protected:
    ILoan() = default;
    ILoan(const ILoan&) = delete;
    ILoan& operator=(const ILoan&) = delete;
};

template <class Key>
class Loan final : public ILoan {
public:
    using Debts = Owed<Key> ClientState::*;

    Loan(Debts debts, std::vector<Key> keys) : debts_(debts), keys_(std::move(keys)) {
        tickets_.reserve(keys_.size());
    }

    /// The command leaves.
    void take(ClientState& state) {
        Owed<Key>& all = state.*debts_;
        for (const Key& key : keys_)
            if (all.isOwed(key)) isBehindAnother_ = true;
        for (const Key& key : keys_) tickets_.push_back(all.add(key));
    }
    void giveBack(ClientState& state) override {
        for (std::size_t i = 0; i < tickets_.size(); ++i)
            (state.*debts_).cancel(keys_[i], tickets_[i]);
        tickets_.clear();
    }

    std::size_t size() const { return keys_.size(); }
    bool isBehindAnother() const { return isBehindAnother_; }

private:
    const Debts debts_;
    const std::vector<Key> keys_;
    std::vector<typename Owed<Key>::Ticket> tickets_;
    bool isBehindAnother_ = false;
};

/// The loans of the commands that QOR has not acknowledged, by request id: its refusal may come
/// when the sender waits no longer. No more than `maxLoans` are known, the newest; what QOR refuses
/// of older ones stays owed.
class Loans {
public:
    static constexpr std::size_t maxLoans = 100;

    void keep(std::uint32_t requestId, std::shared_ptr<ILoan> loan) {
        loans_.emplace_back(requestId, std::move(loan));
        if (loans_.size() > maxLoans) loans_.pop_front();
    }

    /// Null if there is none. It is not kept any more.
    std::shared_ptr<ILoan> take(std::uint32_t requestId) {
        for (auto loan = loans_.begin(); loan != loans_.end(); ++loan) {
            if (loan->first != requestId) continue;
            const std::shared_ptr<ILoan> taken = std::move(loan->second);
            loans_.erase(loan);
            return taken;
        }
        return nullptr;
    }

private:
    std::deque<std::pair<std::uint32_t, std::shared_ptr<ILoan>>> loans_;  // oldest first
};
