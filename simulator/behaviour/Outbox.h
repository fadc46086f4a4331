#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "wire/Message.h"
#include "wire/Record.h"

namespace simulator {

/// One record (or raw bytes) on its way to the client, with the faults it is to suffer.
struct Delivery {
    std::optional<Record> record;  ///< none = raw
    std::string raw;
    MessageForm form;  ///< over window messages
    std::optional<std::size_t> splitAfterBytes;
    std::uint32_t gapMs = 0;
    bool mergeWithNext = false;
    bool closeMid = false;    ///< only the first half is sent, then the connection closes
    bool closeAfter = false;  ///< with nothing to send: just closes

    std::string bytes() const { return record ? record->bytes() : raw; }
};

/// What the link is to do next: bytes to send as one piece, then perhaps to close.
struct Piece {
    std::string bytes;
    bool close = false;
    std::optional<Record> record;  ///< what was sent, for the log
    bool isRest = false;           ///< second part of a record that was told before
    MessageForm form;
};

/// Deliveries in order of time; those of the same time in order of posting.
class Outbox {
public:
    void post(Delivery delivery, std::uint64_t dueMs);
    /// The next piece to hand to the link at nowMs; nothing yet = nullopt.
    std::optional<Piece> take(std::uint64_t nowMs);
    std::optional<std::uint64_t> nextMs() const;
    void clear();

private:
    Piece cut(Delivery delivery, std::uint64_t nowMs);

    std::multimap<std::uint64_t, Delivery> waiting_;
    std::string held_;              // merged in front of the next piece
    std::optional<Delivery> rest_;  // second part of a split delivery; nothing overtakes it
    std::uint64_t restDueMs_ = 0;
};

}  // namespace simulator
