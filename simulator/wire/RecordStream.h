#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "wire/Record.h"

namespace simulator {

/// The stream holds something that can be no record; there is no way to find the next one.
class StreamBroken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Cuts a byte stream into records, whatever pieces it arrives in.
class RecordStream {
public:
    static constexpr std::size_t maxPayloadBytes = 128U * 1024U * 1024U - 12U;

    void append(std::string_view bytes) { buffer_.append(bytes); }

    /// The next complete record; nothing while it is incomplete. Throws StreamBroken as soon as a
    /// length word asks for more than maxPayloadBytes, before anything is stored for it.
    std::optional<Record> next();

    std::size_t bufferedBytes() const { return buffer_.size() - position_; }

private:
    void dropConsumed();

    std::string buffer_;
    std::size_t position_ = 0;  // start of the first record not yet handed out
};

}  // namespace simulator
