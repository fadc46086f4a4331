#include "wire/RecordStream.h"

#include "wire/Reader.h"

namespace simulator {

namespace {

constexpr std::size_t headerBytes = 12;
constexpr std::uint32_t idMask = 0xFFFF;
constexpr std::uint32_t replyFlag = 0x10000;

}  // namespace

std::optional<Record> RecordStream::next() {
    const std::string_view rest = std::string_view(buffer_).substr(position_);
    if (rest.size() < headerBytes) {
        dropConsumed();
        return std::nullopt;
    }
    const std::size_t payloadBytes = wordAt(rest, 8);
    if (payloadBytes > maxPayloadBytes) {
        throw StreamBroken("a record announces " + std::to_string(payloadBytes) +
                           " payload bytes; the limit is " + std::to_string(maxPayloadBytes));
    }
    if (rest.size() - headerBytes < payloadBytes) {
        dropConsumed();
        return std::nullopt;
    }
    Record record;
    record.id = static_cast<CommandId>(wordAt(rest, 0) & idMask);
    record.isReply = (wordAt(rest, 0) & replyFlag) != 0;
    record.requestId = wordAt(rest, 4);
    record.payload = std::string(rest.substr(headerBytes, payloadBytes));
    position_ += headerBytes + payloadBytes;
    return record;
}

void RecordStream::dropConsumed() {
    buffer_.erase(0, position_);
    position_ = 0;
}

}  // namespace simulator
