#pragma once

#include <cstdint>
#include <string>

namespace simulator {

enum class CommandId : std::uint16_t {
    Ping = 0,
    StartEdit = 1,
    KwpConnect = 2,
    GetParamInfo = 3,
    Shutdown = 4,
    SetParamList = 5,
    ReceiveParamData = 6,
    DirectCtrl = 7,
    EcuToolRoutine = 8,
    GetDtc = 9,
    RedirectUi = 10,
    GetHex = 11,
    StaticParam = 12,
    EcuSegment = 14,
    ExecKwp = 15,
    CanBusConnect = 16,
    CanBusData = 17,
    ReadTogether = 18,
    CanBusSend = 19
};

/// One command on the wire: three words (header, request id, payload length), then the payload.
struct Record {
    CommandId id = CommandId::Ping;
    bool isReply = false;
    std::uint32_t requestId = 0;
    std::string payload;

    std::string bytes() const;
};

/// "GetParamInfo" and the like; "command 13" for a number that has no name.
std::string commandName(CommandId id);

}  // namespace simulator
