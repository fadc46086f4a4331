#pragma once

#include <cstdint>
#include <optional>

namespace simulator {

/// The tag of a window message that carries a record.
constexpr std::uint32_t recordTag = 3084;

/// What a window message has besides its bytes. Other values than these are faults.
struct MessageForm {
    std::uint32_t tag = recordTag;
    /// Set: no bytes at all, the data pointer is null, and this length is announced.
    std::optional<std::uint32_t> nullLength;
};

}  // namespace simulator
