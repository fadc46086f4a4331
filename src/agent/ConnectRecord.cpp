#include "agent/ConnectRecord.h"

#include "common/Paths.h"

using protocol::KwpConnect;
using EcuConnect = QorControlFacade::EcuConnect;

namespace {

std::uint32_t modeOf(EcuConnect::ConnType type) {
    switch (type) {
        case EcuConnect::SecurityAccess:
            return KwpConnect::modeSecurityAccess;
        case EcuConnect::Alternative:
            return KwpConnect::modeAlternative;
        default:
            return KwpConnect::modeDefault;
    }
}

}  // namespace

KwpConnect makeConnectRecord(const EcuConnect& settings, EcuConnect::ConnType type) {
    KwpConnect record;
    if (settings.protocol >= 1 && settings.protocol <= 4) record.protocol = settings.protocol;
    record.protocolOption = settings.protocolOption;
    record.optionFlag = settings.optionFlag;
    record.kLineBaudRate = settings.kLineBaudRate;
    record.canBaudRate = settings.canBaudRate;
    record.refreshPeriodMs = settings.refreshPeriodMs;
    record.mode = modeOf(type);
    record.canRequestId = settings.canRequestId;
    record.canResponseId = settings.canResponseId;
    record.addressByte1 = settings.addressByte1;
    record.addressByte2 = settings.addressByte2;
    record.addressWord = settings.addressWord;
    record.extraFlag = settings.extraFlag;
    if (type == EcuConnect::SecurityAccess && !settings.securityDll.empty())
        record.securityDll = common::resolveAgainstExecutable(settings.securityDll);
    record.finalFlag = settings.finalFlag;
    return record;
}
