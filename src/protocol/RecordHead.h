#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "protocol/Wire.h"

namespace protocol {

/// The three words in front of a payload.
struct RecordHead {
    static constexpr std::size_t encodedBytes = 12;

    std::uint32_t header = 0;
    std::uint32_t requestId = 0;
    std::uint32_t payloadLength = 0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("header", self.header);
        visit("requestId", self.requestId);
        visit("payloadLength", self.payloadLength);
    }

    /// The head at `position`; at least `encodedBytes` must follow there.
    static RecordHead read(std::string_view bytes, std::size_t position) {
        RecordHead head;
        wire::Reader(bytes.substr(position, encodedBytes)).get(head);
        return head;
    }
};

}  // namespace protocol
