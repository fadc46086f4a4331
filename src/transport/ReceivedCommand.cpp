#include "transport/ReceivedCommand.h"

#include "protocol/RecordHead.h"

using protocol::RecordHead;

std::uint32_t ReceivedCommand::pingStatus() const {
    return isPing ? static_cast<const CommandPing&>(*command).status : 0;
}

ReceivedCommand recognise(const std::string& record, const ICommandReceiver::Prototypes& prototypes,
                          const CommandPing& ping) {
    std::size_t consumed = 0;
    for (const auto& prototype : prototypes) {
        const auto* command = dynamic_cast<const IExternalCommand*>(prototype.get());
        auto parsed = command->parse(record, consumed);
        if (parsed) return {std::move(parsed), false};
    }
    auto parsed = ping.parse(record, consumed);
    const bool isPing = parsed != nullptr;
    return {std::move(parsed), isPing};
}

void tellUnreadable(const std::string& record, ICommandReceiver& receiver) {
    if (record.size() < RecordHead::encodedBytes) return;
    const RecordHead head = RecordHead::read(record, 0);
    receiver.onUnreadable(head.header & ExternalCommand::idMask, head.requestId,
                          (head.header & ExternalCommand::replyFlag) != 0);
}
