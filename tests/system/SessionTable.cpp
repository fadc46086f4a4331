#include "OperationTable.h"

namespace {

OperationRow segment() {
    return {"setEcuSegment",
            R"({"id":14})",
            [](QorControlFacade& facade, unsigned, std::string&) {
                return facade.setEcuSegment(QorControlFacade::getEdcRamSegmentName(), true,
                                            nullptr);
            },
            "",
            {"EcuSegment 1 'WorkingPage' 1"},
            {"EcuSegment 1 'WorkingPage' 1"},
            {},
            {"1\tSetting segment = 'WorkingPage' [1]"},
            {"info: SET-segment(WorkingPage): [1]"},
            {"1\tSetting segment = 'WorkingPage' [1]"},
            {"info: SET-segment(WorkingPage): [1]"},
            {},
            false};
}

OperationRow openBus() {
    return {"connectCanBus",
            R"({"id":16})",
            [](QorControlFacade& facade, unsigned, std::string&) {
                return facade.connectCanBus({250000, false, true},
                                            QorControlFacade::EcuConnect::Alternative);
            },
            "",
            {"CanBusConnect 1 250000 0 1"},
            {},
            {},
            {},
            {},
            {},
            {},
            {},
            false,
            true};
}

/// The last of all: it lets go of the ECU.
OperationRow openModel() {
    return {"openModel",
            R"({"id":1})",
            [](QorControlFacade& facade, unsigned, std::string&) {
                return facade.openModel(
                    {6, "engine.sdm", 4, "engine.hex", 5, "", 9, {{"b", "2"}, {"a", "1"}}});
            },
            "",
            {"KwpConnect protocol=0 1 1 10400 125000 period=0 mode=0 FFFFFFFF FFFFFFFF 255 255 255 "
             "0 1 '' 1",
             "Shutdown 2",
             "StartEdit stage=7 mode=2 'engine.sdm' 4 ['engine.hex'][5] [][] ['a':'1' 'b':'2']"},
            {"StartEdit stage=1 mode=1 '' -1 [][] [][] ['EEPROM_ID':'EC0417-000293' "
             "'crc32':'5D3A91C7' 'description':'Spark ignition, four cylinders, electronic "
             "throttle' 'name':'Engine controller 1.8' 'version':'4.12.7']"},
            {},
            {"1\tOpening model = 'engine.sdm', hex = 'engine.hex', csv = ''"},
            {"info: OPEN-model(engine.sdm): ['engine.hex' '']"},
            {"1\tOpening model = 'engine.sdm', hex = 'engine.hex', csv = ''"},
            {"info: OPEN-model(engine.sdm): ['engine.hex' '']"},
            {},
            false,
            true};
}

}  // namespace

std::vector<OperationRow> sessionTable() {
    return {segment(), openBus(), openModel()};
}
