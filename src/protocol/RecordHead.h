#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

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
    static RecordHead read(const std::string& bytes, std::size_t position) {
        const std::string image = bytes.substr(position, encodedBytes);
        RecordHead head;
        wire::Reader(image).get(head);
        return head;
    }
};

}  // namespace protocol
