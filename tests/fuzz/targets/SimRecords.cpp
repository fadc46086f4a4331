// What a host sends to the simulated QOR: its stream of records, cut anywhere, and its own reading
// of each payload. Of a payload that the library has nothing to add to, the two programs, which
// share no source, must think the same.
#include <memory>

#include "protocol/Commands.h"
#include "Target.h"
#include "wire/Payloads.h"
#include "wire/RecordStream.h"

namespace {

using simulator::CommandId;
using simulator::Record;

/// The payload as the library writes it again; nothing if that reads as something else.
template <class Command>
bool isCanonical(const std::string& payload) {
    const std::unique_ptr<IExternalCommand> command(Command().createFromPayload(payload));
    if (!command) return false;
    const auto& read = dynamic_cast<const Command&>(*command);
    if (read.payloadBytes() != payload.size()) return false;
    std::string written;
    read.serializePayload(written);
    return written == payload;
}

/// The same, but that numbers which are signalling NaNs may be quiet ones: 32-bit code may make
/// them so merely by passing them on.
bool isSame(const std::string& written, const std::string& payload) {
    if (written.size() != payload.size()) return false;
    for (std::size_t i = 0; i < payload.size(); ++i) {
        if (written[i] == payload[i]) continue;
        const bool isQuieted = sizeof(void*) == 4 && i + 1 < payload.size() &&
                               static_cast<unsigned char>(written[i]) >= 0xF8 &&
                               (written[i] ^ payload[i]) == 0x08 && (payload[i + 1] & 0x7F) == 0x7F;
        if (!isQuieted) return false;
    }
    return true;
}

template <class Payload, class Command>
void tryAs(const std::string& payload) {
    const std::string written = Payload::read(payload).write();
    FUZZ_REQUIRE(Payload::read(written).write() == written);
    if (isCanonical<Command>(payload)) FUZZ_REQUIRE(isSame(written, payload));
}

void tryPayload(const Record& record) {
    switch (record.id) {
#define QOR_TRY(Id, Payload, Command) \
    case CommandId::Id:               \
        return tryAs<simulator::Payload, Command>(record.payload);
        QOR_TRY(Ping, PingPayload, CommandPing)
        QOR_TRY(StartEdit, EditPayload, CommandStartEdit)
        QOR_TRY(KwpConnect, ConnectPayload, CommandKwpConnect)
        QOR_TRY(GetParamInfo, ParamInfoPayload, CommandGetParamInfo)
        QOR_TRY(Shutdown, ShutdownPayload, CommandShutdown)
        QOR_TRY(SetParamList, ParamListPayload, CommandSetParamList)
        QOR_TRY(ReceiveParamData, ParamDataPayload, CommandReceiveParamData)
        QOR_TRY(DirectCtrl, DirectCtrlPayload, CommandDirectCtrl)
        QOR_TRY(EcuToolRoutine, RoutinePayload, CommandEcuToolRoutine)
        QOR_TRY(GetDtc, TroubleCodesPayload, CommandGetDTC)
        QOR_TRY(RedirectUi, MessageBoxPayload, CommandRedirectUI)
        QOR_TRY(GetHex, HexPayload, CommandGetHex)
        QOR_TRY(StaticParam, StaticParamPayload, CommandStaticParam)
        QOR_TRY(EcuSegment, SegmentPayload, CommandEcuSegment)
        QOR_TRY(ExecKwp, KwpPayload, CommandExecKwp)
        QOR_TRY(CanBusConnect, CanConnectPayload, CommandCanBusConnect)
        QOR_TRY(CanBusData, CanDataPayload, CommandCanBusData)
        QOR_TRY(ReadTogether, ReadTogetherPayload, CommandReadTogether)
        QOR_TRY(CanBusSend, CanSendPayload, CommandCanBusSend)
#undef QOR_TRY
    }
}

void takeRecords(simulator::RecordStream& stream) {
    while (const auto record = stream.next()) {
        tryPayload(*record);
        FUZZ_REQUIRE(!simulator::commandName(record->id).empty());
        simulator::RecordStream again;
        again.append(record->bytes());
        const auto same = again.next();
        FUZZ_REQUIRE(same.has_value() && same->bytes() == record->bytes());
    }
}

/// A byte says where the stream is cut.
void tryOne(std::string_view bytes) {
    fuzz::Input input(bytes);
    const std::size_t pieceBytes = 1 + input.byte();
    simulator::RecordStream stream;
    try {
        while (!input.isEmpty()) {
            stream.append(input.take(pieceBytes));
            takeRecords(stream);
        }
    } catch (const simulator::StreamBroken&) {
        FUZZ_REQUIRE(stream.bufferedBytes() >= 12);
    }
    FUZZ_REQUIRE(stream.bufferedBytes() <= bytes.size());
}

const fuzz::Registered registered({"simrecords", tryOne});

}  // namespace
