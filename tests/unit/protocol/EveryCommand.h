#pragma once

#include <gtest/gtest.h>

#include "protocol/Commands.h"

namespace testing_support {

template <class Command>
struct CommandClass {
    using Type = Command;
    using Record = typename Command::Payload;
};

/// Calls `visit(CommandClass<Command>())` for each of the 19 command classes; a failed
/// expectation names the class.
template <class Visitor>
void forEveryCommand(Visitor&& visit) {
#define QOR_VISIT_COMMAND(commandId, Class, Record) \
    {                                               \
        SCOPED_TRACE(#Class);                       \
        visit(CommandClass<Class>());               \
    }
    QOR_COMMANDS(QOR_VISIT_COMMAND)
#undef QOR_VISIT_COMMAND
}

template <class Record>
std::string payloadOf(const Record& record) {
    std::string payload;
    wire::Writer(payload).put(record);
    return payload;
}

template <class Record>
Record recordFrom(const std::string& payload) {
    Record record;
    wire::Reader(payload).get(record);
    return record;
}

}  // namespace testing_support
