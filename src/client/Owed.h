#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What QOR still owes of one kind of thing, by a key: the requests that have left for it less the
/// data that has come since, whoever waited for it. QOR's data does not tell whose request it
/// answers; while something is owed, nobody can know.
///
/// However many things a host asks for in vain, no more than `maxKeys` are told apart, and no text
/// longer than `maxKeyChars`. What goes beyond counts together: each of it looks owed while one is.
template <class Key>
class Owed {
public:
    static constexpr std::size_t maxKeys = 1000;
    static constexpr std::size_t maxKeyChars = 1000;

    /// One request for one key; no two have the same.
    struct Ticket {
        std::uint64_t number = 0;
        bool isApart = false;  // under its own key
    };

    static bool isShort(const std::string& key) { return key.size() <= maxKeyChars; }
    template <class Other>
    static bool isShort(const Other&) {
        return true;
    }

    bool isOwed(const Key& key) const { return others_ != 0 || debts_.count(key) != 0; }

    /// A request has left.
    Ticket add(const Key& key) {
        const bool hasPlace = debts_.size() < maxKeys && isShort(key);
        auto found = debts_.find(key);
        if (found == debts_.end() && hasPlace) found = debts_.emplace(key, Debt(1)).first;
        const Ticket ticket{++lastNumber_, found != debts_.end()};
        if (ticket.isApart)
            found->second.add(ticket.number);
        else
            ++others_;
        return ticket;
    }

    /// Data has come, for the oldest request: QOR answers in order. Where nothing is owed nothing
    /// happens.
    void pay(const Key& key) {
        const auto found = debts_.find(key);
        if (found == debts_.end()) {
            if (others_ != 0) --others_;
        } else {
            found->second.payOldest();
            dropIfPaid(found);
        }
    }

    /// The request was refused. Nothing happens if data has paid for it before.
    void cancel(const Key& key, const Ticket& ticket) {
        if (ticket.number <= clearedNumber_) return;
        if (!ticket.isApart) {
            if (others_ != 0) --others_;
            return;
        }
        const auto found = debts_.find(key);
        if (found == debts_.end()) return;
        found->second.cancel(ticket.number);
        dropIfPaid(found);
    }

    void clear() {
        debts_.clear();
        others_ = 0;
        clearedNumber_ = lastNumber_;
    }

private:
    /// So many requests of one key are known one by one, the newest; of older ones the count.
    static constexpr std::size_t maxNumbers = 16;

    /// The requests for one key that are not paid.
    class Debt {
    public:
        /// With room for the first, so that nothing throws once the key has its entry.
        explicit Debt(std::size_t room) { numbers_.reserve(room); }

        void add(std::uint64_t number) {
            numbers_.push_back(number);
            if (numbers_.size() <= maxNumbers) return;
            numbers_.erase(numbers_.begin());
            ++older_;
        }
        void payOldest() {
            if (older_ != 0)
                --older_;
            else
                numbers_.erase(numbers_.begin());
        }
        void cancel(std::uint64_t number) {
            const auto found = std::find(numbers_.begin(), numbers_.end(), number);
            if (found != numbers_.end())
                numbers_.erase(found);
            else if (older_ != 0 && (numbers_.empty() || number < numbers_.front()))
                --older_;
        }
        bool isPaid() const { return older_ == 0 && numbers_.empty(); }

    private:
        std::vector<std::uint64_t> numbers_;  // in their order
        std::uint32_t older_ = 0;
    };
    using Debts = std::map<Key, Debt>;  // none is paid

    void dropIfPaid(typename Debts::iterator debt) {
        if (debt->second.isPaid()) debts_.erase(debt);
    }

    Debts debts_;
    std::uint32_t others_ = 0;
    std::uint64_t lastNumber_ = 0;
    std::uint64_t clearedNumber_ = 0;  // up to this one all are forgotten
};
