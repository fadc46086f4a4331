#include "protocol/ExternalCommand.h"

#include <new>

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

void ExternalCommand::write(std::string& out) const {
    std::string payload;
    serializePayload(payload);
    const RecordHead head{header_, requestId_, static_cast<std::uint32_t>(payload.size())};
    wire::Writer(out).put(head);
    out += payload;
}

std::unique_ptr<IExternalCommand> ExternalCommand::parse(const std::string& in,
                                                         std::size_t& consumed) const {
    if (in.size() < RecordHead::encodedBytes) return nullptr;
    const RecordHead head = RecordHead::read(in, 0);
    if ((head.header & idMask) != getId()) return nullptr;
    if (head.payloadLength > in.size() - RecordHead::encodedBytes) return nullptr;
    consumed = RecordHead::encodedBytes + head.payloadLength;
    std::unique_ptr<IExternalCommand> command = createFrom(in, head.payloadLength);
    if (!command) return nullptr;
    auto& parsed = static_cast<ExternalCommand&>(*command);
    parsed.requestId_ = head.requestId;
    parsed.header_ = (parsed.header_ & ~replyFlag) | (head.header & replyFlag);
    return command;
}

std::unique_ptr<IExternalCommand> ExternalCommand::createFrom(const std::string& record,
                                                              std::size_t payloadLength) const {
    try {
        return std::unique_ptr<IExternalCommand>(
            createFromPayload(record.substr(RecordHead::encodedBytes, payloadLength)));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void ExternalCommand::stampAsReplyTo(std::uint32_t requestId) {
    header_ |= replyFlag;
    requestId_ = requestId;
}
