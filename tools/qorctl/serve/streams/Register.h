#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "serve/Method.h"
#include "serve/methods/Common.h"
#include "serve/rpc/Failure.h"

namespace qorctl::serve {

/// The streams of one kind, of all clients, each under a number. Its operations may be called from
/// every thread.
template <class Stream>
class Register {
public:
    struct Entry {
        std::uint64_t number;
        std::shared_ptr<Client> client;
        std::shared_ptr<Stream> stream;
    };
    using Entries = std::vector<Entry>;

    /// @param most  so many a client may have.
    explicit Register(std::size_t most) : most_(most) {}
    Register(const Register&) = delete;
    Register& operator=(const Register&) = delete;

    /// Throws a Failure if the client has too many, or has left.
    void mayAdd(const Client& client) const {
        const Guard guard(mutex_);
        check(client);
    }

    /// The new one's number. Throws as `mayAdd` does.
    std::uint64_t add(const std::shared_ptr<Client>& client, std::shared_ptr<Stream> stream) {
        const Guard guard(mutex_);
        check(*client);
        entries_.push_back({++lastNumber_, client, std::move(stream)});
        return lastNumber_;
    }

    /// Throws a Failure if the client has none of that number.
    void remove(std::uint64_t number, const Client& client) {
        if (!removeIf([&](const Entry& each) {
                return each.number == number && each.client->number() == client.number();
            }))
            refuseParams("this client has no stream of that number");
    }

    void removeOf(ClientNumber client) {
        removeIf([&](const Entry& each) { return each.client->number() == client; });
    }

    Entries all() const {
        const Guard guard(mutex_);
        return entries_;
    }

    std::size_t count() const {
        const Guard guard(mutex_);
        return entries_.size();
    }

private:
    using Guard = std::lock_guard<std::mutex>;

    void check(const Client& client) const {
        if (client.hasLeft()) throw Failure{RpcCode::ending, "the client has left"};
        const auto own = std::count_if(entries_.begin(), entries_.end(), [&](const Entry& each) {
            return each.client->number() == client.number();
        });
        if (static_cast<std::size_t>(own) >= most_)
            throw Failure{RpcCode::busy,
                          "this client has " + std::to_string(most_) + " such streams already"};
    }

    bool removeIf(const std::function<bool(const Entry&)>& is) {
        Entries removed;  // their ends are their own affair
        const Guard guard(mutex_);
        const auto kept = std::stable_partition(entries_.begin(), entries_.end(),
                                                [&](const Entry& each) { return !is(each); });
        removed.assign(std::make_move_iterator(kept), std::make_move_iterator(entries_.end()));
        entries_.erase(kept, entries_.end());
        return !removed.empty();
    }

    const std::size_t most_;
    mutable std::mutex mutex_;
    Entries entries_;               // guarded by mutex_
    std::uint64_t lastNumber_ = 0;  // guarded by mutex_
};

/// Does something on the thread of the library, when it is its turn.
using Later = std::function<void(std::function<void()>)>;

/// @name The two methods of a kind of streams
/// @{
using StartStream =
    std::function<std::uint64_t(const nlohmann::json&, const std::shared_ptr<Client>&)>;
using StopStream = std::function<void(std::uint64_t, const Client&)>;

Methods streamMethods(const std::string& kind, const std::string& about, Params params,
                      Method::Way way, StartStream start, StopStream stop);
/// @}

}  // namespace qorctl::serve
