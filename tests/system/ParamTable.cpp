#include <sstream>

#include "OperationTable.h"

using Lines = OperationRow::Lines;

namespace {

std::string listed(const std::vector<double>& values) {
    std::ostringstream out;
    out << '[';
    for (const double& value : values) out << (&value == values.data() ? "" : " ") << value;
    out << ']';
    return out.str();
}

OperationRow description() {
    return {"getParamDescription",
            R"({"id":3,"name":"LambdaMap"})",
            [](QorControlFacade& facade, unsigned, std::string& results) {
                wex::ParamDescription found = {};
                const bool done = facade.getParamDescription("LambdaMap", found);
                if (done)
                    results = found.name + "|" + found.text1 + "|" + found.text2 + "|" +
                              found.text3 + "|" + found.text4 + "|" + std::to_string(found.value) +
                              (found.threeArrays ? "|3" : "|1");
                return done;
            },
            "LambdaMap|LambdaMap|Target air-fuel ratio over engine speed (1/min) and load "
            "(%)|Fuel||0|3",
            {"GetParamInfo 'LambdaMap' '' '' '' 0..0 -1 arrays=1"},
            {"GetParamInfo 'LambdaMap' 'Target air-fuel ratio over engine speed (1/min) and load "
             "(%)' '' 'Fuel' 0.7..1.3 55 arrays=1"},
            {},
            {},
            {},
            {"2\tQorControlFacade::getParamDescription() failed on param: LambdaMap , t: # ms"},
            {},
            {}};
}

OperationRow oneArray() {
    return {
        "getParamData_ofOneArray",
        R"({"id":7,"operation":1,"name":"MaxVehicleSpeed"})",
        [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
            std::vector<double> values;
            const bool done = facade.getParamData("MaxVehicleSpeed", values, timeoutMs);
            if (done) results = listed(values);
            return done;
        },
        "[210]",
        {"GetParamInfo 'MaxVehicleSpeed' '' '' '' 0..0 -1 arrays=1",
         "DirectCtrl 34 op=1 [] 'MaxVehicleSpeed'"},
        {"GetParamInfo 'MaxVehicleSpeed' 'Vehicle speed limit' 'km/h' 'Limits' 30..300 34 arrays=0",
         "DirectCtrl 34 op=1 [210] 'MaxVehicleSpeed'"},
        {"GetParamInfo 'MaxVehicleSpeed' 'Vehicle speed limit' 'km/h' 'Limits' 30..300 34 "
         "arrays=0"},
        {"1\tOK on get: MaxVehicleSpeed [210 ], t: # ms"},
        {},
        {"2\tQorControlFacade::getParamData() failed on param: MaxVehicleSpeed , t: # ms",
         "1\tQorControlFacade::getParamData() isEcuOnline="},
        {"error: FAILED GET-param(MaxVehicleSpeed), t: # ms"},
        {}};
}

OperationRow threeArrays() {
    return {"getParamData_ofThreeArrays",
            R"({"id":12,"operation":1,"name":"PedalCurve"})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
                std::vector<double> values, second, third;
                const bool done =
                    facade.getParamData("PedalCurve", values, second, third, timeoutMs);
                if (done) results = listed(values) + listed(second) + listed(third);
                return done;
            },
            "[0 4 14 38 69 100][0 10 25 50 75 100][]",
            {"GetParamInfo 'PedalCurve' '' '' '' 0..0 -1 arrays=1", "StaticParam 52 op=1 [] [] []"},
            {"GetParamInfo 'PedalCurve' 'Throttle command over pedal position (%)' '%' 'Air' "
             "0..100 52 arrays=1",
             "StaticParam 52 op=1 [0 4 14 38 69 100] [0 10 25 50 75 100] []"},
            {"GetParamInfo 'PedalCurve' 'Throttle command over pedal position (%)' '%' 'Air' "
             "0..100 52 arrays=1"},
            {"1\tOK on get: PedalCurve [0 4 14 38 69 100 ], t: # ms"},
            {},
            {"2\tQorControlFacade::getParamData() failed on param: PedalCurve , t: # ms",
             "1\tQorControlFacade::getParamData() isEcuOnline="},
            {"error: FAILED GET-param(PedalCurve), t: # ms"},
            {}};
}

OperationRow asText() {
    return {"getParamDataAsString",
            R"({"id":7,"operation":1,"name":"SoftwareVersion"})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
                return facade.getParamDataAsString("SoftwareVersion", results, timeoutMs);
            },
            "4.12.7",
            {"GetParamInfo 'SoftwareVersion' '' '' '' 0..0 -1 arrays=1",
             "DirectCtrl 1 op=1 [] 'SoftwareVersion'"},
            {"GetParamInfo 'SoftwareVersion' 'Version of the controller software' '' "
             "'Identification' 0..255 1 arrays=0",
             "DirectCtrl 1 op=1 [52 46 49 50 46 55] 'SoftwareVersion'"},
            {"GetParamInfo 'SoftwareVersion' 'Version of the controller software' '' "
             "'Identification' 0..255 1 arrays=0"},
            {"1\tOK on get: SoftwareVersion [52 46 49 50 46 55 ], t: # ms"},
            {},
            {"2\tQorControlFacade::getParamData() failed on param: SoftwareVersion , t: # ms",
             "1\tQorControlFacade::getParamData() isEcuOnline="},
            {"error: FAILED GET-param(SoftwareVersion), t: # ms"},
            {}};
}

OperationRow writeOne() {
    return {"setParamData_ofOneArray",
            R"({"id":7,"operation":4,"name":"FanOnTemperature"})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
                // The further arrays of a parameter that has but one are left out.
                return facade.setParamData("FanOnTemperature", {95.5}, {1}, {2}, timeoutMs);
            },
            "",
            {"GetParamInfo 'FanOnTemperature' '' '' '' 0..0 -1 arrays=1",
             "DirectCtrl 43 op=4 [95.5] ''"},
            {"GetParamInfo 'FanOnTemperature' 'Cooling fan on above' 'degC' 'Cooling' 70..120 43 "
             "arrays=0",
             "DirectCtrl 43 op=4 [95.5] 'FanOnTemperature'"},
            {"GetParamInfo 'FanOnTemperature' 'Cooling fan on above' 'degC' 'Cooling' 70..120 43 "
             "arrays=0"},
            {"1\tOK on set: FanOnTemperature [95.5 ], t: # ms"},
            {},
            {"2\tQorControlFacade::setParamData() failed on param: FanOnTemperature , t: # ms"},
            {"error: FAILED SET-param(FanOnTemperature), t: # ms"},
            {}};
}

OperationRow writeThree() {
    return {"setParamData_ofThreeArrays",
            R"({"id":12,"operation":2,"name":"DwellTime"})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
                return facade.setParamData("DwellTime", {7, 5, 4, 3, 2}, {6, 8, 10, 13, 16}, {},
                                           timeoutMs);
            },
            "",
            {"GetParamInfo 'DwellTime' '' '' '' 0..0 -1 arrays=1",
             "StaticParam 51 op=2 [7 5 4 3 2] [6 8 10 13 16] []"},
            {"GetParamInfo 'DwellTime' 'Ignition dwell time over battery voltage (V)' 'ms' "
             "'Ignition' 0.5..15 51 arrays=1",
             "StaticParam 51 op=2 [7 5 4 3 2] [6 8 10 13 16] []"},
            {"GetParamInfo 'DwellTime' 'Ignition dwell time over battery voltage (V)' 'ms' "
             "'Ignition' 0.5..15 51 arrays=1"},
            {"1\tOK on set: DwellTime [7 5 4 3 2 ], t: # ms"},
            {},
            {"2\tQorControlFacade::setParamData() failed on param: DwellTime , t: # ms"},
            {"error: FAILED SET-param(DwellTime), t: # ms"},
            {}};
}

OperationRow writeDynamic() {
    return {
        "setDynamicData",
        R"({"id":7,"operation":5,"name":"CylinderCount"})",
        [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
            return facade.setDynamicData("CylinderCount", "6", timeoutMs);
        },
        "",
        {"GetParamInfo 'CylinderCount' '' '' '' 0..0 -1 arrays=1", "DirectCtrl 45 op=5 [] '6'"},
        {"GetParamInfo 'CylinderCount' 'Number of cylinders' '' 'Configuration' 1..12 45 arrays=0",
         "DirectCtrl 45 op=5 [6] 'CylinderCount'"},
        {"GetParamInfo 'CylinderCount' 'Number of cylinders' '' 'Configuration' 1..12 45 arrays=0"},
        {"1\tOK on set: CylinderCount [6], t: # ms"},
        {},
        {"2\tQorControlFacade::setDynamicData() failed on param: CylinderCount , t: # ms"},
        {"error: FAILED SET-DYN-param(CylinderCount), t: # ms"},
        {}};
}

OperationRow startControl() {
    return {"startDirectCtrl",
            R"({"id":7,"operation":2,"name":"CoolingFan"})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
                return facade.startDirectCtrl("CoolingFan", timeoutMs);
            },
            "",
            {"GetParamInfo 'CoolingFan' '' '' '' 0..0 -1 arrays=1",
             "DirectCtrl 26 op=2 [] 'CoolingFan'"},
            {"GetParamInfo 'CoolingFan' 'Cooling fan stage' '' 'Actuator' 0..2 26 arrays=0",
             "DirectCtrl 26 op=2 [0] 'CoolingFan'"},
            {"GetParamInfo 'CoolingFan' 'Cooling fan stage' '' 'Actuator' 0..2 26 arrays=0"},
            {"1\tOK on Start DirectCtrl: CoolingFan , t: # ms"},
            {},
            {"2\tQorControlFacade::startDirectCtrl() failed on param: CoolingFan , t: # ms"},
            {"error: FAILED START_DIRECTCTRL-param(CoolingFan), t: # ms"},
            {}};
}

OperationRow stopControl() {
    return {"stopDirectCtrl",
            R"({"id":7,"operation":3,"name":"FuelPump"})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string&) {
                return facade.stopDirectCtrl("FuelPump", timeoutMs);
            },
            "",
            {"DirectCtrl 25 op=3 [] 'FuelPump'"},
            {"DirectCtrl 25 op=3 [100] 'FuelPump'"},
            {},
            {"1\tOK on Stop DirectCtrl: FuelPump , t: # ms"},
            {},
            {"2\tQorControlFacade::stopDirectCtrl() failed on param: FuelPump , t: # ms"},
            {"error: FAILED STOP_DIRECTCTRL-param(FuelPump), t: # ms"},
            [](QorControlFacade& facade) { facade.startDirectCtrl("FuelPump", 2000); }};
}

OperationRow together() {
    const Lines resolving = {
        "GetParamInfo 'KnockThreshold' 'Knock detection threshold' 'V' 'Ignition' 0.1..5 41 "
        "arrays=0",
        "GetParamInfo 'KnockRetard' 'Ignition retard per knock event' 'deg' 'Ignition' 0..10 42 "
        "arrays=0"};
    Lines answers = resolving;
    answers.push_back("ReadTogether [41 42] [[1.45] [2.25]] ['KnockThreshold' 'KnockRetard']");
    return {"getParamDataAtOnce",
            R"({"id":18})",
            [](QorControlFacade& facade, unsigned timeoutMs, std::string& results) {
                std::vector<std::vector<double>> values;
                const bool done =
                    facade.getParamDataAtOnce({"KnockThreshold", "KnockRetard"}, values, timeoutMs);
                for (const auto& array : values) results += listed(array);
                return done;
            },
            "[1.45][2.25]",
            {"GetParamInfo 'KnockThreshold' '' '' '' 0..0 -1 arrays=1",
             "GetParamInfo 'KnockRetard' '' '' '' 0..0 -1 arrays=1",
             "ReadTogether [41 42] [] ['KnockThreshold' 'KnockRetard']"},
            answers,
            resolving,
            {"1\tOK on getAtOnce: data[KnockThreshold]=1.45 , data[KnockRetard]=2.25 ,  , t: # ms"},
            {},
            {"2\tQorControlFacade::getParamDataAtOnce() failed on KnockThreshold , KnockRetard ,  "
             ", t: # ms"},
            {"error: FAILED GET_AT_ONCE-p(KnockThreshold , KnockRetard , ), t: # ms"},
            {}};
}

}  // namespace

std::vector<OperationRow> paramTable() {
    return {description(), oneArray(),     threeArrays(),  asText(),      writeOne(),
            writeThree(),  writeDynamic(), startControl(), stopControl(), together()};
}
