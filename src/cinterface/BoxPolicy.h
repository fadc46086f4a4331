#pragma once

#include <cstdint>

#include "facade/channel/MessageBoxDesk.h"

namespace cinterface {

/// What becomes of QOR's message boxes; see QorSetMessageBoxPolicy.
struct BoxPolicy {
    channel::MessageBoxDesk::Policy policy = channel::MessageBoxDesk::Policy::show;
    std::uint32_t choice = 0;
    std::uint32_t askMs = 0;
};

}  // namespace cinterface
