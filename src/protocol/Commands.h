#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "protocol/ExternalCommand.h"
#include "protocol/Records.h"

namespace protocol {

/// A command whose payload is the record `Record`; its fields are members of the command.
/// `Self` is the concrete class that parsing builds.
template <class Self, std::uint16_t Id, class Record>
class RecordCommand : public ExternalCommand, public Record {
public:
    using Payload = Record;
    static constexpr std::uint16_t id = Id;

    RecordCommand() : ExternalCommand(Id) {}
    explicit RecordCommand(Record record) : ExternalCommand(Id), Record(std::move(record)) {}

    const Record& payload() const { return *this; }
    Record& payload() { return *this; }

    void serializePayload(std::string& out) const override { wire::Writer(out).put(payload()); }
    IExternalCommand* createFromPayload(std::string_view bytes) const override {
        return createAs<Self>(bytes);
    }
    std::size_t payloadBytes() const override { return wire::encodedBytes(payload()); }

protected:
    /// A new `Concrete` read from `bytes`; null when the payload asks for an unreasonable amount of
    /// memory.
    template <class Concrete>
    static IExternalCommand* createAs(std::string_view bytes) {
        try {
            auto command = std::make_unique<Concrete>();
            wire::Reader(bytes).get(command->payload());
            return command.release();
        } catch (const std::length_error&) {
            return nullptr;
        }
    }
};

}  // namespace protocol

/// The commands of the protocol: id, class, payload record, who sends it. Id 13 is not assigned.
/// A request and its answer are objects of the same class.
#define QOR_COMMANDS(COMMAND)                                                                \
    COMMAND(0, CommandPing, Ping)                         /* client; and acknowledgements */ \
    COMMAND(1, CommandStartEdit, StartEdit)               /* client; QOR for exports */      \
    COMMAND(2, CommandKwpConnect, KwpConnect)             /* client */                       \
    COMMAND(3, CommandGetParamInfo, ParamInfo)            /* client */                       \
    COMMAND(4, CommandShutdown, Shutdown)                 /* client */                       \
    COMMAND(5, CommandSetParamList, SetParamList)         /* client */                       \
    COMMAND(6, CommandReceiveParamData, ReceiveParamData) /* QOR */                          \
    COMMAND(7, CommandDirectCtrl, DirectCtrl)             /* client */                       \
    COMMAND(8, CommandEcuToolRoutine, EcuToolRoutine)     /* client */                       \
    COMMAND(9, CommandGetDTC, GetDtc)                     /* client */                       \
    COMMAND(10, CommandRedirectUI, RedirectUI)            /* QOR; the client the choice */   \
    COMMAND(11, CommandGetHex, GetHex)                    /* QOR */                          \
    COMMAND(12, CommandStaticParam, StaticParam)          /* client */                       \
    COMMAND(14, CommandEcuSegment, EcuSegment)            /* client */                       \
    COMMAND(15, CommandExecKwp, ExecKwp)                  /* client */                       \
    COMMAND(16, CommandCanBusConnect, CanBusConnect)      /* client */                       \
    COMMAND(17, CommandCanBusData, CanBusData)            /* client */                       \
    COMMAND(18, CommandReadTogether, ReadTogether)        /* client */                       \
    COMMAND(19, CommandCanBusSend, CanBusSend)            /* client */

#define QOR_DECLARE_COMMAND(commandId, Class, Record)                                  \
    class Class : public protocol::RecordCommand<Class, commandId, protocol::Record> { \
    public:                                                                            \
        using RecordCommand::RecordCommand;                                            \
    };
QOR_COMMANDS(QOR_DECLARE_COMMAND)
#undef QOR_DECLARE_COMMAND

namespace protocol {

constexpr std::uint16_t unassignedId = 13;

namespace detail {

#define QOR_LIST_ID(commandId, Class, Record) commandId,
constexpr std::uint16_t ids[] = {QOR_COMMANDS(QOR_LIST_ID)};
#undef QOR_LIST_ID

constexpr bool idsAreComplete() {
    std::uint16_t expected = 0;
    for (const std::uint16_t id : ids) {
        if (expected == unassignedId) ++expected;
        if (id != expected) return false;
        ++expected;
    }
    return expected == 20;
}
static_assert(idsAreComplete(), "the ids 0 to 19 without 13, in ascending order, each once");

}  // namespace detail
}  // namespace protocol
