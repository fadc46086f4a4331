#include "Operations.h"

#include <algorithm>

#include "HostsOwn.h"
#include "qorcontrol/ConnectProgress.h"
#include "qorcontrol/MessageBoxes.h"
#include "qorcontrol/Outcome.h"
#include "qorcontrol/Streams.h"
#include "qorcontrol/Waiting.h"

namespace torture {
namespace {

using channel::Kind;
using Facade = QorControlFacade;
using Values = std::vector<double>;

constexpr Facade::EcuConnect::ConnType type = Facade::EcuConnect::Default;
constexpr Facade::CanBusConnect bus{500000, true, false};
constexpr unsigned int launchPings = 20;

Facade::EcuConnect ecu() {
    return {1, 1, true, 10400, 125000, 20, ~0u, ~0u, 255, 255, 255, true, "", true};
}

Facade::ModelDescription model() {
    Facade::ModelDescription description;
    description.model = "engine.sdm";
    description.hex = "a file whose name is longer than what a string holds by itself.hex";
    return description;
}

using Run = std::function<bool(Host&)>;

const std::vector<std::string>& twoNames() {
    static const std::vector<std::string> names{"EngineSpeed", "EngineLoad"};
    return names;
}

const std::vector<std::string>& allNames() {
    static const std::vector<std::string> names{"EngineSpeed", "EngineLoad", "MaxVehicleSpeed"};
    return names;
}

/// Of more than a string holds by itself; the host's own, as the other names.
const std::string& longName() {
    static const std::string name = "CoolantTemperature";
    return name;
}

const std::string& actuator() {
    static const std::string name = "ThrottleActuator";
    return name;
}

const Values& oneValue() {
    static const Values value{120};
    return value;
}

/// An operation that the host waits for, of a facade that works.
template <class Call>
Operation of(const char* name, std::vector<Kind> kinds, Call call) {
    return {name, std::move(kinds), true, [call](Host& host) { return call(*host.facade); }};
}

/// What is only posted is behind the agent when it has answered the next request.
bool awaitAgent(const Facade& facade, bool posted) {
    return posted && facade.pingQor(timeoutMs);
}

std::vector<Operation> reads() {
    return {
        of("ping", {Kind::pingQor}, [](Facade& qor) { return qor.pingQor(timeoutMs); }),
        of("describe", {Kind::getParamDescription},
           [](Facade& qor) {
               wex::ParamDescription description{};
               return qor.getParamDescription(longName(), description);
           }),
        of("read one array", {Kind::getParamData},
           [](Facade& qor) {
               Values values;
               return qor.getParamData("EngineSpeed", values, timeoutMs) && !values.empty();
           }),
        {"read three arrays",
         {Kind::getParamData},
         true,
         [](Host& host) {
             Values first, second, third;
             return host.facade->getParamData(host.map, first, second, third, timeoutMs) &&
                    !third.empty();
         }},
        of("read a text", {Kind::getParamData},
           [](Facade& qor) {
               std::string text;
               return qor.getParamDataAsString("EngineSpeed", text, timeoutMs);
           }),
        of("read at once", {Kind::getParamDataAtOnce},
           [](Facade& qor) {
               std::vector<Values> values;
               return qor.getParamDataAtOnce(allNames(), values, timeoutMs);
           }),
        of("the outcome", {Kind::getParamData},
           [](Facade& qor) {
               Values values;
               qor.getParamData("EngineSpeed", values, 0);
               return qorcontrol::lastOutcome().cause != qorcontrol::Cause::none;
           }),
    };
}

std::vector<Operation> writes() {
    return {
        of("write", {Kind::setParamData},
           [](Facade& qor) {
               return qor.setParamData("MaxVehicleSpeed", oneValue(), {}, {}, timeoutMs);
           }),
        {"write three arrays",
         {Kind::getParamData, Kind::setParamData},
         true,
         [](Host& host) {
             Values first, second, third;
             return host.facade->getParamData(host.map, first, second, third, timeoutMs) &&
                    host.facade->setParamData(host.map, first, second, third, timeoutMs);
         }},
        of("write a text", {Kind::setDynamicData},
           [](Facade& qor) { return qor.setDynamicData("MaxVehicleSpeed", "130", timeoutMs); }),
        of("direct control", {Kind::startDirectCtrl, Kind::stopDirectCtrl},
           [](Facade& qor) {
               return qor.startDirectCtrl(actuator(), timeoutMs) &&
                      qor.stopDirectCtrl(actuator(), timeoutMs);
           }),
    };
}

std::vector<Operation> diagnostics() {
    return {
        of("clear trouble codes", {Kind::clearDtc},
           [](Facade& qor) { return qor.clearDtc(timeoutMs); }),
        of("trouble codes", {Kind::getDtcByStatus},
           [](Facade& qor) {
               std::vector<Facade::DtcDescription> codes;
               return qor.getDtcByStatus(codes, timeoutMs);
           }),
        {"KWP",
         {Kind::connect, Kind::sendKwpCommand},
         true,
         [](Host& host) {
             if (!host.facade->connect(hostsOwn(ecu), type, &host.monitor)) return false;
             Facade::KwpCommand kwp{0x27, std::string("\x02\x00\x0A", 3), 0};
             return host.facade->sendKwpCommand(kwp, timeoutMs);
         }},
        of("CAN values", {Kind::getCanBusData},
           [](Facade& qor) {
               Facade::CanBusData frames = hostsOwn([] {
                   return Facade::CanBusData{{{0x201, 5}, {0x7FF, 6}}};
               });
               return qorcontrol::connectCanBusAndWait(qor, bus, type) &&
                      qor.getCanBusData(frames, timeoutMs);
           }),
        of("CAN message", {Kind::sendCanBusMsg},
           [](Facade& qor) {
               return qorcontrol::connectCanBusAndWait(qor, bus, type) &&
                      qor.sendCanBusMsg(0x200, 7, std::string("\x05\x00\x01", 3), timeoutMs);
           }),
    };
}

std::vector<Operation> sessions() {
    return {
        {"connect",
         {Kind::connect},
         true,
         [](Host& host) { return host.facade->connect(hostsOwn(ecu), type, &host.monitor); }},
        of("connect without a monitor", {Kind::connect},
           [](Facade& qor) { return awaitAgent(qor, qor.connect(hostsOwn(ecu), type, nullptr)); }),
        of("segment", {Kind::setEcuSegment},
           [](Facade& qor) {
               return qor.setEcuSegment(Facade::getEdcRamSegmentName(), true, nullptr);
           }),
        of("open a model", {Kind::openModel},
           [](Facade& qor) { return awaitAgent(qor, qor.openModel(hostsOwn(model))); }),
        of("open a model and wait", {Kind::openModel},
           [](Facade& qor) { return qorcontrol::openModelAndWait(qor, hostsOwn(model)); }),
        of("connect the bus", {Kind::connectCanBus},
           [](Facade& qor) { return awaitAgent(qor, qor.connectCanBus(bus, type)); }),
        of("connect the bus and wait", {Kind::connectCanBus},
           [](Facade& qor) { return qorcontrol::connectCanBusAndWait(qor, bus, type); }),
        of("message boxes", {},
           [](Facade& qor) {
               qorcontrol::QorBox box;
               qorcontrol::setBoxPolicy(qor, qorcontrol::BoxPolicy::answer, 1);
               qorcontrol::nextBox(qor, 0, box);
               return true;
           }),
    };
}

/// Streams need an ECU for which QOR has reported.
bool streamValues(Host& host) {
    const Facade& qor = *host.facade;
    if (!qor.connect(hostsOwn(ecu), type, &host.monitor)) return false;
    if (!qor.startParamRead(&host.values, twoNames())) return false;
    std::vector<Facade::ParamValue> batch;
    const bool came = hostsOwn([&] { return host.values.pop(batch, timeoutMs); });
    return awaitAgent(qor, qor.stopParamRead(&host.values)) && came;
}

bool streamCodes(Host& host) {
    const Facade& qor = *host.facade;
    if (!qor.connect(hostsOwn(ecu), type, &host.monitor)) return false;
    if (!qor.startDtcRead(&host.codes, timeoutMs, 5)) return false;
    std::vector<Facade::DtcDescription> batch;
    const bool came = hostsOwn([&] { return host.codes.pop(batch, timeoutMs); });
    return awaitAgent(qor, qor.stopDtcRead()) && came;
}

bool collectArrivals(Host& host) {
    const Facade& qor = *host.facade;
    if (!qor.connect(hostsOwn(ecu), type, &host.monitor)) return false;
    host.arrivals.emplace(qor, twoNames(), 100);
    std::vector<qorcontrol::Arrival> values;
    const bool came = host.arrivals->read(values, timeoutMs);
    return host.arrivals->stop() && came;
}

std::vector<Operation> streams() {
    return {
        {"value stream", {Kind::stopParamRead}, true, streamValues},
        {"trouble code stream", {Kind::startDtcRead, Kind::stopDtcRead}, true, streamCodes},
        {"arrivals", {Kind::stopParamRead}, true, collectArrivals},
    };
}

std::vector<Operation> lives() {
    return {
        {"start", {}, false, [](Host& host) { return host.start(); }},
        of("path of QOR", {},
           [](Facade& qor) {
               qor.getQorExecutablePath();
               return true;
           }),
        of("shutdown", {},
           [](Facade& qor) {
               qor.shutdown();
               return true;
           }),
        {"destruction",
         {},
         true,
         [](Host& host) {
             host.facade.reset();
             return true;
         }},
    };
}

}  // namespace

void Host::construct() {
    facade = std::make_unique<Facade>(settingsPath, nullptr, 20, hostPath);
}

bool Host::start() {
    construct();
    return awaitAnswer();
}

bool Host::awaitAnswer() const {
    for (unsigned int ping = 1; ping <= launchPings; ++ping) {
        if (facade->pingQor(ping * timeoutMs)) return true;  // a busy machine takes its time
        if (qorcontrol::lastOutcome().cause == qorcontrol::Cause::agentEnded) return false;
    }
    return false;
}

namespace {

/// Begins or ends a facade, or only asks for what it knows: nothing is told of that.
bool isAboutLife(const Operation& operation) {
    return !operation.needsFacade || operation.kinds.empty();
}

/// Whose values may just not come: no request of the host's has failed then.
bool isStream(const Operation& operation) {
    return std::any_of(operation.kinds.begin(), operation.kinds.end(), [](Kind kind) {
        return kind == Kind::stopParamRead || kind == Kind::stopDtcRead;
    });
}

}  // namespace

std::string complaintAbout(const Operation& operation, Result result) {
    if (isAboutLife(operation) || result == Result::worked) return {};
    const qorcontrol::Cause cause = qorcontrol::lastOutcome().cause;
    if (result == Result::threw)
        return cause == qorcontrol::Cause::outOfMemory ? ""
                                                       : "memory ran out, and the cause is another";
    return cause != qorcontrol::Cause::none || isStream(operation) ? ""
                                                                   : "it failed without a cause";
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = [] {
        twoNames(), allNames(), longName(), actuator(),
            oneValue();  // made before anything can fail
        std::vector<Operation> every;
        for (const auto& group : {lives(), reads(), writes(), diagnostics(), sessions(), streams()})
            every.insert(every.end(), group.begin(), group.end());
        return every;
    }();
    return all;
}

}  // namespace torture
