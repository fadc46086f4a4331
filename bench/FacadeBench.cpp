#include "FacadeBench.h"

#include <windows.h>

#include "Process.h"
#include "qorcontrol/TcpNoDelay.h"
#include "Require.h"

namespace {

const char* const scalar = "EngineSpeed";
constexpr unsigned int timeoutMs = 2000;
constexpr unsigned int streamPeriodMs = 100;
constexpr unsigned int popMs = 20;
constexpr unsigned int longPeriodMs = 10u * 60u * 1000u;

const std::vector<std::string> streamed = {
    "EngineSpeed",      "EngineLoad",           "VehicleSpeed",       "CoolantTemperature",
    "OilTemperature",   "IntakeAirTemperature", "ExhaustTemperature", "AmbientPressure",
    "ManifoldPressure", "OilPressure",          "FuelPressure",       "BatteryVoltage"};

class QuietMonitor final : public IProgressMonitor {
public:
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    bool isCancelled() override { return false; }
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string&, unsigned int) override {}
};

}  // namespace

FacadeBench::FacadeBench(Transport transport, Answers answers)
    : settingsPath_(
          writeSettings(transport, answers == Answers::stamped ? "facade" : "separate", answers)) {
    facade_ = std::make_unique<QorControlFacade>(settingsPath_, nullptr, 0,
                                                 programFolder() + "qor-bench.exe");
    await([&] { return facade_->pingQor(timeoutMs); },
          "the first ping of the simulated QOR (see qor-bench.log)");
    connect(0);
}

FacadeBench::~FacadeBench() {
    facade_.reset();
    DeleteFileA(settingsPath_.c_str());
}

void FacadeBench::connect(unsigned int refreshPeriodMs) {
    QorControlFacade::EcuConnect settings = {};
    settings.protocol = 1;
    settings.refreshPeriodMs = refreshPeriodMs;
    QuietMonitor monitor;
    require(facade_->connect(settings, QorControlFacade::EcuConnect::Default, &monitor), "connect");
    periodMs_ = refreshPeriodMs;
    require(facade_->getParamData(scalar, values_, timeoutMs), "the first read");
}

void FacadeBench::setNoDelay(bool isWanted) {
    qorcontrol::setTcpNoDelay(*facade_, isWanted);
}

void FacadeBench::ping() {
    require(facade_->pingQor(timeoutMs), "pingQor");
}

void FacadeBench::readParam() {
    if (periodMs_ != 0) connect(0);
    require(facade_->getParamData(scalar, values_, timeoutMs), "getParamData");
}

void FacadeBench::readCachedParam() {
    if (periodMs_ == 0) connect(longPeriodMs);
    require(facade_->getParamData(scalar, values_, timeoutMs), "a cached getParamData");
}

void FacadeBench::slowExchange() {
    QorControlFacade::KwpCommand reset{0x11, "\x01", 0};
    require(facade_->sendKwpCommand(reset, timeoutMs), "sendKwpCommand");
}

std::unique_ptr<Taker> FacadeBench::startStream() {
    if (periodMs_ != streamPeriodMs) connect(streamPeriodMs);
    require(facade_->startParamRead(&queue_, streamed), "startParamRead");
    std::vector<QorControlFacade::ParamValue> batch;
    await(
        [&] {
            queue_.pop(batch, popMs);
            return batch.size() >= streamed.size();
        },
        "the first batch");
    return std::make_unique<Taker>([this] {
        std::vector<QorControlFacade::ParamValue> taken;
        queue_.pop(taken, popMs);
    });
}

void FacadeBench::stopStream() {
    require(facade_->stopParamRead(&queue_), "stopParamRead");
    ping();
}
