#pragma once

#include <string>
#include <string_view>

#include "protocol/RecordHead.h"
#include "protocol/Wire.h"

/// Writes a record of the command and reads its payload back, without drawing an id. Gives the
/// record's length.
template <class Command>
std::size_t writeAndRead(const Command& command, typename Command::Payload& read) {
    std::string record;
    command.write(record);
    const auto head = protocol::RecordHead::read(record, 0);
    const auto payload =
        std::string_view(record).substr(protocol::RecordHead::encodedBytes, head.payloadLength);
    typename Command::Payload fresh;
    wire::Reader(payload).get(fresh);
    read = std::move(fresh);
    return record.size();
}
