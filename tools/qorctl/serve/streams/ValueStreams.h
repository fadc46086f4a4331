#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "serve/streams/Register.h"
#include "serve/streams/Source.h"
#include "serve/streams/Subscription.h"

namespace qorctl::serve {

/// The streams of values of all clients. QOR is told of each name once, whoever wants it, and told
/// again when nobody wants it any more.
class ValueStreams {
public:
    /// What became of the values.
    struct Counts {
        std::size_t sent = 0;
        std::size_t missed = 0;
    };

    /// @param later  does something on the thread of the library.
    ValueStreams(const QorControlFacade& facade, Later later)
        : facade_(facade), later_(std::move(later)) {}
    ValueStreams(const ValueStreams&) = delete;
    ValueStreams& operator=(const ValueStreams&) = delete;

    /// They refer to this object.
    Methods methods();

    /// The client's streams. Any thread may call; what QOR is to be told waits for `tidy`.
    void endOf(ClientNumber client) { streams_.removeOf(client); }
    /// Tells QOR of what nobody wants any more. On the thread of the library.
    void tidy();
    std::size_t count() const { return streams_.count(); }

    /// Passes on what has come; of the feeding thread.
    Counts feed();

private:
    using Guard = std::lock_guard<std::mutex>;

    using Streams = Register<Subscription>;

    std::uint64_t start(const nlohmann::json& given, const std::shared_ptr<Client>& client);
    void provide(const std::vector<std::string>& names);
    /// One of its names has become unknown, as with another model: the others go on without it.
    void split(const std::shared_ptr<Source>& source);
    bool isKnown(const std::string& name) const;
    std::vector<std::shared_ptr<Source>> sources() const;

    const QorControlFacade& facade_;
    const Later later_;
    mutable std::mutex mutex_;
    // Changed by the thread of the library alone.
    std::vector<std::shared_ptr<Source>> sources_;  // guarded by mutex_
    Streams streams_{100};
};

}  // namespace qorctl::serve
