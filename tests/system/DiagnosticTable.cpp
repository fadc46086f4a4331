#include <cstdio>

#include "OperationTable.h"

namespace {

std::string listed(const std::vector<QorControlFacade::DtcDescription>& codes) {
    std::string text;
    for (const auto& code : codes)
        text += std::to_string(code.code) + "/" + std::to_string(code.status) + " " + code.text1 +
                "|" + code.text2 + "|" + code.text3 + "|" + code.text4 + ";";
    return text;
}

OperationRow readCodes() {
    return {"getDtcByStatus",
            R"({"id":9})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
                std::vector<QorControlFacade::DtcDescription> codes;
                const bool done = facade.getDtcByStatus(codes, timeoutMs);
                results = listed(codes);
                return done;
            },
            "275/96 P0113|Intake air temperature sensor: signal too high|sporadic|Air;"
            "769/97 P0301|Cylinder 1: misfire detected|present|Ignition;"
            "1056/32 P0420|Catalyst: efficiency below threshold|stored|Exhaust;"
            "1378/96 P0562|System voltage low|sporadic|Supply;"
            "49408/161 U0100|Lost communication with the transmission controller|present|Network;",
            {"GetDtc [] 1"},
            {"GetDtc [113/96 'P0113' 'Intake air temperature sensor: signal too high' 'sporadic' "
             "'Air' 301/97 'P0301' 'Cylinder 1: misfire detected' 'present' 'Ignition' 420/32 "
             "'P0420' 'Catalyst: efficiency below threshold' 'stored' 'Exhaust' 562/96 'P0562' "
             "'System voltage low' 'sporadic' 'Supply' C100/161 'U0100' 'Lost communication with "
             "the transmission controller' 'present' 'Network'] 1"},
            {},
            {"1\tOK on DTC by status [size=5], t: # ms"},
            {},
            {"2\tQorControlFacade::getDtcByStatus() failed, t: # ms"},
            {},
            {}};
}

OperationRow clearCodes() {
    return {"clearDtc",
            R"({"id":8})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
                return facade.clearDtc(timeoutMs);
            },
            "",
            {"EcuToolRoutine 3"},
            {},
            {},
            {"1\tOK on clear-dtc, t: # ms"},
            {},
            {"2\tQorControlFacade::clearDtc() failed, t: # ms"},
            {},
            {}};
}

OperationRow kwp() {
    return {"sendKwpCommand",
            R"({"id":15})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
                QorControlFacade::KwpCommand command = {0x27, std::string("\x02\x00\x0A", 3), 0};
                const bool done = facade.sendKwpCommand(command, timeoutMs);
                if (done) results = command.data + (command.failed != 0 ? " failed" : " done");
                return done;
            },
            "\x7F\x27\x35 failed",
            {"ExecKwp channel=1 27 [02 00 0A] t={timeout} failed=0"},
            {"ExecKwp channel=1 27 [7F 27 35] t={timeout} failed=1"},
            {},
            {"1\tSending KWP = 0x27 [02 00 0A ]",
             "1\tAnswer on KWP = 0x27 [7F 27 35 ], Failed , t: # ms"},
            {"info: KWP-send(0x27): [02 00 0A ]", "info: KWP-answer(0x27): [7F 27 35 ], Failed"},
            {"1\tSending KWP = 0x27 [02 00 0A ]", "2\tFailed on KWP = 0x27 , t: # ms"},
            {"info: KWP-send(0x27): [02 00 0A ]", "error: FAILED KWP-send(0x27), t: # ms"},
            {}};
}

void openBus(QorControlFacade& facade) {
    facade.connectCanBus({500000, true, false}, QorControlFacade::EcuConnect::Default);
    facade.pingQor(2000);  // the bus is open once a later request is answered
}

OperationRow readBus() {
    return {"getCanBusData",
            R"({"id":17})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
                QorControlFacade::CanBusData data = {{{0x201, 5}, {0x7FF, 6}}};
                const bool done = facade.getCanBusData(data, timeoutMs);
                for (const auto& item : data.items)
                    if (done)
                        results +=
                            std::to_string(item.canId) + "=" + std::to_string(item.value) + " ";
                return done;
            },
            "513=-40 2047=-1 ",
            {"CanBusData [201:5 7FF:6]"},
            {"CanBusData [201:-40 7FF:-1]"},
            {},
            {"1\tAnswer on CanBus-get [00000201 : -40 , 000007FF : -1 , ], t: # ms"},
            {},
            {"2\tFailed on CanBus-get, t: # ms"},
            {"error: FAILED CanBus-get, t: # ms"},
            openBus};
}

OperationRow sendToBus() {
    return {"sendCanBusMsg",
            R"({"id":19})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
                return facade.sendCanBusMsg(0x200, 7, std::string("\x05\x00\x01", 3), timeoutMs);
            },
            "",
            {"CanBusSend 512 7 [05 00 01]"},
            {},
            {},
            {},
            {},
            {"2\tFailed on CanBus-send, t: # ms"},
            {"error: FAILED CanBus-send, t: # ms"},
            openBus,
            true,
            false,
            true};
}

}  // namespace

std::vector<OperationRow> diagnosticTable() {
    return {readCodes(), clearCodes(), kwp(), readBus(), sendToBus()};
}
