#include "TimedOperationTable.h"

#include <utility>

namespace {

using channel::Kind;
using Facade = QorControlFacade;

/// How the payloads of one class tell the time-out.
template <class Data, class Member>
std::function<unsigned int(const channel::CmdData&)> word(Member member) {
    return
        [member](const channel::CmdData& data) { return dynamic_cast<const Data&>(data).*member; };
}

/// An answer's payload, made anew for each call.
template <class Data, class... Values>
std::function<TimedOperation::Results()> made(Values... values) {
    return [=] { return std::make_shared<Data>(values...); };
}

const auto ofParam = word<channel::CmdDataParamData>(&channel::CmdDataParamData::timeoutMs);

TimedOperation description() {
    return {"getParamDescription",
            Kind{4},
            [](Facade& facade, unsigned int) {
                wex::ParamDescription description{};
                return facade.getParamDescription("a", description);
            },
            {},
            made<channel::CmdDataParamInfo>("a", wex::ParamDescription()),
            {"2\tQorControlFacade::getParamDescription() failed on param: a , t: 37 ms"},
            {},
            TimedOperation::Waits::threeSeconds};
}

TimedOperation read(const char* name,
                    std::function<bool(Facade&, unsigned int timeoutMs)> variant) {
    return {name,
            Kind{5},
            std::move(variant),
            ofParam,
            made<channel::CmdDataParamData>("a", 0u),
            {"2\tQorControlFacade::getParamData() failed on param: a , t: 37 ms",
             "1\tQorControlFacade::getParamData() isEcuOnline=false"},
            {"error: FAILED GET-param(a), t: 37 ms"}};
}

bool readThree(Facade& facade, unsigned int timeoutMs) {
    std::vector<double> values, second, third;
    return facade.getParamData("a", values, second, third, timeoutMs);
}

bool readOne(Facade& facade, unsigned int timeoutMs) {
    std::vector<double> values;
    return facade.getParamData("a", values, timeoutMs);
}

bool readText(Facade& facade, unsigned int timeoutMs) {
    std::string text;
    return facade.getParamDataAsString("a", text, timeoutMs);
}

TimedOperation write() {
    return {"setParamData",
            Kind{6},
            [](Facade& facade, unsigned int timeoutMs) {
                return facade.setParamData("a", {1}, {2}, {3}, timeoutMs);
            },
            ofParam,
            {},
            {"2\tQorControlFacade::setParamData() failed on param: a , t: 37 ms"},
            {"error: FAILED SET-param(a), t: 37 ms"}};
}

TimedOperation writeDynamic() {
    return {"setDynamicData",
            Kind{24},
            [](Facade& facade, unsigned int timeoutMs) {
                return facade.setDynamicData("a", "1", timeoutMs);
            },
            ofParam,
            {},
            {"2\tQorControlFacade::setDynamicData() failed on param: a , t: 37 ms"},
            {"error: FAILED SET-DYN-param(a), t: 37 ms"}};
}

TimedOperation startControl() {
    return {"startDirectCtrl",
            Kind{33},
            [](Facade& facade, unsigned int timeoutMs) {
                return facade.startDirectCtrl("a", timeoutMs);
            },
            ofParam,
            {},
            {"2\tQorControlFacade::startDirectCtrl() failed on param: a , t: 37 ms"},
            {"error: FAILED START_DIRECTCTRL-param(a), t: 37 ms"}};
}

TimedOperation stopControl() {
    return {"stopDirectCtrl",
            Kind{34},
            [](Facade& facade, unsigned int timeoutMs) {
                return facade.stopDirectCtrl("a", timeoutMs);
            },
            ofParam,
            {},
            {"2\tQorControlFacade::stopDirectCtrl() failed on param: a , t: 37 ms"},
            {"error: FAILED STOP_DIRECTCTRL-param(a), t: 37 ms"}};
}

TimedOperation readTogether() {
    return {"getParamDataAtOnce",
            Kind{23},
            [](Facade& facade, unsigned int timeoutMs) {
                std::vector<std::vector<double>> values;
                return facade.getParamDataAtOnce({"a", "b"}, values, timeoutMs);
            },
            word<channel::CmdParamDataAtOnce>(&channel::CmdParamDataAtOnce::timeoutMs),
            made<channel::CmdParamDataAtOnce>(std::vector<std::string>{"a", "b"}, 0u),
            {"2\tQorControlFacade::getParamDataAtOnce() failed on a , b ,  , t: 37 ms"},
            {"error: FAILED GET_AT_ONCE-p(a , b , ), t: 37 ms"}};
}

TimedOperation ping() {
    return {"pingQor",
            Kind{25},
            [](Facade& facade, unsigned int timeoutMs) { return facade.pingQor(timeoutMs); },
            word<channel::CmdDataPing>(&channel::CmdDataPing::timeoutMs),
            {},
            {"2\tQorControlFacade::pingQor(), t: 37 ms"},
            {}};
}

TimedOperation clearCodes() {
    return {"clearDtc",
            Kind{9},
            [](Facade& facade, unsigned int timeoutMs) { return facade.clearDtc(timeoutMs); },
            {},
            {},
            {"2\tQorControlFacade::clearDtc() failed, t: 37 ms"},
            {},
            TimedOperation::Waits::once};
}

TimedOperation readCodes() {
    return {"getDtcByStatus",
            Kind{18},
            [](Facade& facade, unsigned int timeoutMs) {
                std::vector<Facade::DtcDescription> dtcs;
                return facade.getDtcByStatus(dtcs, timeoutMs);
            },
            word<channel::CmdDataDtcData>(&channel::CmdDataDtcData::statusMask),
            made<channel::CmdDataDtcData>(0u),
            {"2\tQorControlFacade::getDtcByStatus() failed, t: 37 ms"},
            {}};
}

TimedOperation kwp() {
    return {"sendKwpCommand",
            Kind{20},
            [](Facade& facade, unsigned int timeoutMs) {
                Facade::KwpCommand kwp{0x1A, "\x80", 0};
                return facade.sendKwpCommand(kwp, timeoutMs);
            },
            word<channel::CmdDataKwp>(&channel::CmdDataKwp::timeoutMs),
            made<channel::CmdDataKwp>(0u, Facade::KwpCommand()),
            {"1\tSending KWP = 0x1A [80 ]", "2\tFailed on KWP = 0x1A , t: 37 ms"},
            {"info: KWP-send(0x1A): [80 ]", "error: FAILED KWP-send(0x1A), t: 37 ms"}};
}

TimedOperation readBus() {
    return {"getCanBusData",
            Kind{22},
            [](Facade& facade, unsigned int timeoutMs) {
                Facade::CanBusData data{{{0x100, 0}}};
                return facade.getCanBusData(data, timeoutMs);
            },
            word<channel::CmdCanBusData>(&channel::CmdCanBusData::timeoutMs),
            made<channel::CmdCanBusData>(Facade::CanBusData(), 0u),
            {"2\tFailed on CanBus-get, t: 37 ms"},
            {"error: FAILED CanBus-get, t: 37 ms"}};
}

TimedOperation sendToBus() {
    return {"sendCanBusMsg",
            Kind{32},
            [](Facade& facade, unsigned int timeoutMs) {
                return facade.sendCanBusMsg(1, 2, "x", timeoutMs);
            },
            word<channel::CmdCanBusSend>(&channel::CmdCanBusSend::timeoutMs),
            {},
            {"2\tFailed on CanBus-send, t: 37 ms"},
            {"error: FAILED CanBus-send, t: 37 ms"}};
}

}  // namespace

const std::vector<TimedOperation>& timedOperations() {
    static const std::vector<TimedOperation> operations = {
        description(),
        read("getParamData_ofThreeArrays", readThree),
        read("getParamData_ofOneArray", readOne),
        read("getParamDataAsString", readText),
        write(),
        writeDynamic(),
        startControl(),
        stopControl(),
        readTogether(),
        ping(),
        clearCodes(),
        readCodes(),
        kwp(),
        readBus(),
        sendToBus()};
    return operations;
}
