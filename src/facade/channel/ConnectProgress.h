#pragma once

#include <cstdint>

#include "common/Guarded.h"

namespace channel {

/// How far QOR says that the present connect is. The agent notes it; anybody may ask.
class ConnectProgress {
public:
    struct Seen {
        std::int32_t figure = -1;  ///< QOR's own; -1: none yet
        std::uint32_t steps = 0;   ///< so many figures have come
    };

    /// A new connect: nothing has come yet.
    void begin() { *seen_.lock() = Seen(); }
    void note(std::int32_t figure, std::uint32_t steps) { *seen_.lock() = Seen{figure, steps}; }

    Seen seen() { return *seen_.lock(); }

private:
    common::Guarded<Seen> seen_;
};

}  // namespace channel
