#include "protocol/ExternalCommand.h"

#include "protocol/RecordHead.h"
#include "protocol/RequestId.h"

using protocol::RecordHead;

ExternalCommand::ExternalCommand(std::uint16_t id)
    : header_(id), requestId_(protocol::drawRequestId()) {}

std::uint16_t ExternalCommand::getId() const {
    return static_cast<std::uint16_t>(header_ & idMask);
}

bool ExternalCommand::execute(ICommandReplyer*) {
    return true;
}

std::size_t ExternalCommand::recordBytes() const {
    return RecordHead::encodedBytes + payloadBytes();
}

// Counted first, a long record needs neither a second string for its payload nor room that grows.
void ExternalCommand::write(std::string& out) const {
    const std::size_t length = payloadBytes();
    out.reserve(out.size() + RecordHead::encodedBytes + length);
    const RecordHead head{header_, requestId_, static_cast<std::uint32_t>(length)};
    wire::Writer(out).put(head);
    serializePayload(out);
}

std::unique_ptr<IExternalCommand> ExternalCommand::parse(const std::string& in,
                                                         std::size_t& consumed) const {
    if (in.size() < RecordHead::encodedBytes) return nullptr;
    const RecordHead head = RecordHead::read(in, 0);
    if ((head.header & idMask) != getId()) return nullptr;
    if (head.payloadLength > in.size() - RecordHead::encodedBytes) return nullptr;
    consumed = RecordHead::encodedBytes + head.payloadLength;
    const std::string_view record = in;
    std::unique_ptr<IExternalCommand> command(
        createFromPayload(record.substr(RecordHead::encodedBytes, head.payloadLength)));
    if (!command) return nullptr;
    auto& parsed = static_cast<ExternalCommand&>(*command);
    parsed.requestId_ = head.requestId;
    parsed.header_ = (parsed.header_ & ~replyFlag) | (head.header & replyFlag);
    return command;
}

void ExternalCommand::stampAsReplyTo(std::uint32_t requestId) {
    header_ |= replyFlag;
    requestId_ = requestId;
}
