#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

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

    bool isOwed(const Key& key) const { return others_ != 0 || counts_.count(key) != 0; }

    /// A request has left.
    void add(const Key& key) {
        const bool hasPlace = counts_.size() < maxKeys && isShort(key);
        const auto found = hasPlace ? counts_.try_emplace(key, 0).first : counts_.find(key);
        ++(found != counts_.end() ? found->second : others_);
    }

    /// Its data has come, or it was refused. Where nothing is owed nothing happens.
    void pay(const Key& key) {
        const auto found = counts_.find(key);
        if (found == counts_.end()) {
            if (others_ != 0) --others_;
        } else if (--found->second == 0) {
            counts_.erase(found);
        }
    }

    void clear() {
        counts_.clear();
        others_ = 0;
    }

private:
    static bool isShort(const std::string& key) { return key.size() <= maxKeyChars; }
    template <class Other>
    static bool isShort(const Other&) {
        return true;
    }

    std::map<Key, std::uint32_t> counts_;  // none is 0
    std::uint32_t others_ = 0;
};
