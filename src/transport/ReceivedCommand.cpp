#include "transport/ReceivedCommand.h"

#include <new>
#include <utility>

#include "protocol/RecordHead.h"

using protocol::RecordHead;

namespace {

ReceivedCommand offer(const std::string& record, const ICommandReceiver::Prototypes& prototypes,
                      const CommandPing& ping) {
    std::size_t consumed = 0;
    for (const auto& prototype : prototypes) {
        const auto* command = dynamic_cast<const IExternalCommand*>(prototype.get());
        auto parsed = command->parse(record, consumed);
        if (parsed) return {std::move(parsed), false, false};
    }
    auto parsed = ping.parse(record, consumed);
    const bool isPing = parsed != nullptr;
    return {std::move(parsed), isPing, false};
}

}  // namespace

ReceivedCommand recognise(const std::string& record, const ICommandReceiver::Prototypes& prototypes,
                          const CommandPing& ping) {
    try {
        return offer(record, prototypes, ping);
    } catch (const std::bad_alloc&) {
        return {nullptr, false, true};
    }
}

void tellUnreadable(const ReceivedCommand& received, const std::string& record,
                    ICommandReceiver& receiver) {
    if (record.size() < RecordHead::encodedBytes) return;
    const RecordHead head = RecordHead::read(record, 0);
    receiver.onUnreadable({head.header & ExternalCommand::idMask, head.requestId,
                           (head.header & ExternalCommand::replyFlag) != 0, received.lacksMemory});
}
