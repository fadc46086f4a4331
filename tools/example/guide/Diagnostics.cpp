#include "Diagnostics.h"

#include <windows.h>

#include "qorcontrol/Outcome.h"

namespace guide {

// [clearDtc]
bool codesAreGone(const QorControlFacade& qor) {
    if (!qor.clearDtc(1000)) return false;  // 1000 ms, not doubled
    std::vector<QorControlFacade::DtcDescription> codes;
    return qor.getDtcByStatus(codes, 1000) && codes.empty();
}
// [/clearDtc]

// [getDtcByStatus]
// All codes come; what a status means is a matter of the ECU (here: lowest bit = present).
bool presentCodes(const QorControlFacade& qor, std::vector<std::string>& codes) {
    std::vector<QorControlFacade::DtcDescription> all;
    if (!qor.getDtcByStatus(all, 1000)) return false;
    for (const auto& code : all)
        if ((code.status & 1) != 0) codes.push_back(code.text1 + " " + code.text2);
    return true;
}
// [/getDtcByStatus]

// [sendKwpCommand]
// Service 0x1A, "read ECU identification". True only says that the exchange took place.
Exchange readIdentification(const QorControlFacade& qor, unsigned char which, std::string& bytes) {
    QorControlFacade::KwpCommand kwp = {};
    kwp.service = 0x1A;
    kwp.data.assign(1, static_cast<char>(which));
    if (!qor.sendKwpCommand(kwp, 1000)) return Exchange::noAnswer;
    bytes = kwp.data;
    return kwp.failed != 0 ? Exchange::refused : Exchange::answered;
}
// [/sendKwpCommand]

// [askForCertain]
// Asks until the answer is this request's for certain, or `tries` are over.
bool askForCertain(const QorControlFacade& qor, QorControlFacade::KwpCommand& kwp, int tries) {
    const QorControlFacade::KwpCommand request = kwp;
    for (; tries > 0; --tries) {
        kwp = request;
        if (!qor.sendKwpCommand(kwp, 1000)) return false;
        if (!qorcontrol::lastOutcome().mayBelongToEarlier) return true;
        Sleep(1000);  // what QOR still owes comes meanwhile
    }
    return false;
}
// [/askForCertain]

// [getCanBusData]
bool readCan(const QorControlFacade& qor, unsigned int canId, int& value) {
    QorControlFacade::CanBusData data = {{{canId, 0}}};
    if (!qor.getCanBusData(data, 1000)) return false;
    if (data.items.size() != 1 || data.items[0].canId != canId) return false;
    value = data.items[0].value;
    return true;
}
// [/getCanBusData]

// [sendCanBusMsg]
// The bytes are raw, zeros included: give the text its length.
bool sendCan(const QorControlFacade& qor, unsigned int canId, std::uint16_t value) {
    const char bytes[] = {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
    return qor.sendCanBusMsg(canId, 0, std::string(bytes, sizeof bytes), 1000);
}
// [/sendCanBusMsg]

}  // namespace guide
