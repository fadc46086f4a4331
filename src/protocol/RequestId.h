#pragma once

#include <cstdint>

namespace protocol {

/// A 32-bit random request id from a hardware-timing generator that is made, filled once and
/// dropped for this one number (about 0.2 ms). No state survives the call, so the ids of two
/// commands built in quick succession are unrelated; callable from any thread.
std::uint32_t drawRequestId();

}  // namespace protocol
