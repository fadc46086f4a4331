#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace protocol {

/// What stands at a place in a stream of records.
enum class StreamState {
    complete,    ///< a whole record
    incomplete,  ///< the beginning of one, or nothing: more bytes are needed
    hopeless     ///< a length that no record may have: the stream cannot be followed any further
};

/// The record at one place of a stream, as far as its frame tells.
struct FramedRecord {
    StreamState state = StreamState::incomplete;
    std::size_t length = 0;       ///< all its bytes; 0 while its head is not there
    std::uint32_t requestId = 0;  ///< valid if complete
};

/// The longest record that may travel, in either direction: what a process of 32 bits can take,
/// in which a few copies of its content exist at a time. Memory is taken in proportion to the bytes
/// that have arrived, never for what a head announces.
constexpr std::size_t maxRecordBytes = 128u << 20;

/// Looks at the bytes from `position` on, which must not lie behind the end.
FramedRecord recordAt(const std::string& bytes, std::size_t position);

}  // namespace protocol
