#include "wire/RecordStream.h"

#include "wire/Reader.h"

namespace simulator {

namespace {

constexpr std::size_t kHeaderBytes = 12;
constexpr std::uint32_t kIdMask = 0xFFFF;
constexpr std::uint32_t kReplyFlag = 0x10000;

}  // namespace

std::optional<Record> RecordStream::next() {
    const std::string_view rest = std::string_view(buffer_).substr(position_);
    if (rest.size() < kHeaderBytes) {
        dropConsumed();
        return std::nullopt;
    }
    const std::size_t payloadBytes = wordAt(rest, 8);
    if (payloadBytes > kMaxPayloadBytes) {
        throw StreamBroken("a record announces " + std::to_string(payloadBytes) +
                           " payload bytes; the limit is " + std::to_string(kMaxPayloadBytes));
    }
    if (rest.size() - kHeaderBytes < payloadBytes) {
        dropConsumed();
        return std::nullopt;
    }
    Record record;
    record.id = static_cast<CommandId>(wordAt(rest, 0) & kIdMask);
    record.isReply = (wordAt(rest, 0) & kReplyFlag) != 0;
    record.requestId = wordAt(rest, 4);
    record.payload = std::string(rest.substr(kHeaderBytes, payloadBytes));
    position_ += kHeaderBytes + payloadBytes;
    return record;
}

void RecordStream::dropConsumed() {
    buffer_.erase(0, position_);
    position_ = 0;
}

}  // namespace simulator
