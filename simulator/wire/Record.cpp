#include "wire/Record.h"

#include "wire/Writer.h"

namespace simulator {

namespace {

constexpr std::uint32_t replyFlag = 0x10000;

constexpr const char* names[] = {
    "Ping",         "StartEdit",        "KwpConnect",  "GetParamInfo",   "Shutdown",
    "SetParamList", "ReceiveParamData", "DirectCtrl",  "EcuToolRoutine", "GetDtc",
    "RedirectUi",   "GetHex",           "StaticParam", nullptr,          "EcuSegment",
    "ExecKwp",      "CanBusConnect",    "CanBusData",  "ReadTogether",   "CanBusSend"};

}  // namespace

std::string Record::bytes() const {
    const auto header = static_cast<std::uint32_t>(id) | (isReply ? replyFlag : 0U);
    return Writer().u32(header).u32(requestId).text(payload).take();
}

std::string commandName(CommandId id) {
    const auto number = static_cast<std::size_t>(id);
    if (number < std::size(names) && names[number] != nullptr) return names[number];
    return "command " + std::to_string(number);
}

}  // namespace simulator
