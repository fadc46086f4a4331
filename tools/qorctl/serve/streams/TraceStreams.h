#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "serve/streams/GrowingFile.h"
#include "serve/streams/Register.h"

namespace qorctl::serve {

/// Clients that follow the library's trace, as it grows.
class TraceStreams {
public:
    explicit TraceStreams(std::string path) : path_(std::move(path)) {}
    TraceStreams(const TraceStreams&) = delete;
    TraceStreams& operator=(const TraceStreams&) = delete;

    /// They refer to this object.
    Methods methods();

    /// The client has gone. Any thread may call.
    void endOf(ClientNumber client) { streams_.removeOf(client); }
    std::size_t count() const { return streams_.count(); }

    /// Passes on what has been written; of the feeding thread.
    void feed();

private:
    /// The feeding thread's.
    struct Stream {
        std::int64_t tailBytes = 0;  // what of the past it wants
        std::int64_t position = -1;  // -1: it has not begun
        std::int64_t missed = 0;     // bytes
        std::string beginning;       // of a line whose end has not come
    };

    static nlohmann::json nextLines(const GrowingFile& file, std::int64_t size, Stream& stream);

    const std::string path_;
    Register<Stream> streams_{10};
};

}  // namespace qorctl::serve
