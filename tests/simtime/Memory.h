#pragma once

#include <cstddef>

namespace simtime {

/// What the process has allocated and not freed.
std::size_t allocatedBytes();

}  // namespace simtime
