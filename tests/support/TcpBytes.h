#pragma once

#include <cstdint>
#include <string>

/// Bytes as they stand on the stream, put together by hand: tests that expect them share no code
/// with the library that writes them.
namespace tcp {

/// A 32-bit number, lowest byte first.
inline std::string word(std::uint32_t value) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(static_cast<unsigned char>(value >> shift));
    return bytes;
}

inline std::uint32_t wordAt(const std::string& bytes, std::size_t position) {
    std::uint32_t value = 0;
    for (unsigned byte = 0; byte < 4; ++byte)
        value |= std::uint32_t{static_cast<unsigned char>(bytes.at(position + byte))} << (8 * byte);
    return value;
}

constexpr std::uint32_t replyFlag = 0x10000;

/// One whole record: header (command id, perhaps with the reply flag), request id, payload.
inline std::string record(std::uint32_t header, std::uint32_t requestId,
                          const std::string& payload) {
    return word(header) + word(requestId) + word(static_cast<std::uint32_t>(payload.size())) +
           payload;
}

/// The acknowledgement of a request. Status 0: released, 1: handled, 2: not handled.
inline std::string pingAnswer(std::uint32_t requestId, std::uint32_t status) {
    return record(replyFlag | 0, requestId, word(status));
}

/// A record as it was received.
struct Record {
    std::uint32_t header = 0;
    std::uint32_t requestId = 0;
    std::string payload;

    std::uint32_t commandId() const { return header & 0xFFFF; }
    bool isReply() const { return (header & replyFlag) != 0; }
    std::string bytes() const { return record(header, requestId, payload); }
};

}  // namespace tcp
