#include "protocol/RecordStream.h"

#include "protocol/RecordHead.h"

namespace protocol {

FramedRecord recordAt(const std::string& bytes, std::size_t position) {
    FramedRecord record;
    const std::size_t present = bytes.size() - position;
    if (present < RecordHead::encodedBytes) return record;
    const RecordHead head = RecordHead::read(bytes, position);
    if (head.payloadLength > maxRecordBytes - RecordHead::encodedBytes) {
        record.state = StreamState::hopeless;
        return record;
    }
    record.length = RecordHead::encodedBytes + head.payloadLength;
    record.requestId = head.requestId;
    if (record.length <= present) record.state = StreamState::complete;
    return record;
}

}  // namespace protocol
