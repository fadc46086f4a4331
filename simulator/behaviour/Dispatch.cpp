#include "behaviour/Dispatch.h"

#include "behaviour/DiagnosticRequests.h"
#include "behaviour/ParameterRequests.h"
#include "behaviour/SessionRequests.h"

namespace simulator {

namespace {

struct Handler {
    CommandId id;
    Outcome (*carryOut)(Ecu& ecu, std::string_view payload);
};

/// KwpConnect is not here: it needs to know more. ReceiveParamData is not, either: only QOR sends
/// it.
constexpr Handler handlers[] = {
    {CommandId::Ping, ping},
    {CommandId::StartEdit, startEdit},
    {CommandId::GetParamInfo, getParamInfo},
    {CommandId::Shutdown, shutDown},
    {CommandId::SetParamList, setParamList},
    {CommandId::DirectCtrl, directCtrl},
    {CommandId::EcuToolRoutine, runRoutine},
    {CommandId::GetDtc, getTroubleCodes},
    {CommandId::RedirectUi, messageBoxAnswered},
    {CommandId::GetHex, getHex},
    {CommandId::StaticParam, staticParam},
    {CommandId::EcuSegment, selectSegment},
    {CommandId::ExecKwp, execKwp},
    {CommandId::CanBusConnect, canBusConnect},
    {CommandId::CanBusData, canBusData},
    {CommandId::ReadTogether, readTogether},
    {CommandId::CanBusSend, canBusSend},
};

}  // namespace

Outcome dispatch(Ecu& ecu, const Record& request, const BootstrapPlan& plan,
                 std::uint64_t answerMs) {
    if (request.id == CommandId::KwpConnect) {
        return kwpConnect(ecu, request.payload, plan, answerMs);
    }
    for (const Handler& handler : handlers) {
        if (handler.id == request.id) return handler.carryOut(ecu, request.payload);
    }
    return Outcome::refused("not a command that a client sends");
}

}  // namespace simulator
