#include "StreamBench.h"

#include <windows.h>

#include <stdexcept>

#include "common/Deadline.h"
#include "Settings.h"

namespace {

constexpr unsigned int timeoutMs = 2000;
constexpr unsigned int readyMs = 15000;
constexpr unsigned int refreshMs = 100;
constexpr unsigned int popMs = 20;

std::vector<std::string> streamedNames() {
    std::vector<std::string> names;
    names.reserve(streampeer::streamed);
    for (int i = 0; i < streampeer::streamed; ++i) names.push_back(streampeer::streamedName(i));
    return names;
}

void require(bool succeeded, const char* what) {
    if (!succeeded) throw std::runtime_error(std::string(what) + " failed while streaming");
}

/// Tries again and again for a while.
template <class Condition>
void await(Condition holds, const char* what) {
    const auto deadline = common::Deadline::after(common::now(), readyMs);
    while (!holds()) require(!deadline.hasPassed(), what);
}

}  // namespace

StreamBench::StreamBench()
    : port_(freePort()),
      settingsPath_(writeSettings(port_, "stream")),
      peer_("qor-bench.exe", "--stream-peer " + std::to_string(port_)),
      facade_(std::make_unique<QorControlFacade>(settingsPath_, nullptr, refreshMs,
                                                 programFolder() + "qor-bench.exe")) {
    await([&] { return facade_->pingQor(timeoutMs); }, "the first ping");
    QorControlFacade::EcuConnect settings = {};
    settings.protocol = 1;
    settings.refreshPeriodMs = refreshMs;
    require(facade_->connect(settings, QorControlFacade::EcuConnect::Default, nullptr), "connect");
    await([&] { return facade_->isEcuOnline(); }, "the connect");
    // From here on every name is known.
    setPush(atRest);
    acknowledged();
    for (int i = 0; i < streampeer::readOnly; ++i) read();
}

StreamBench::~StreamBench() {
    facade_.reset();
    DeleteFileA(settingsPath_.c_str());
}

void StreamBench::startStream() {
    setPush({0, streampeer::streamed, 50000});
    facade_->startParamRead(&queue_, streamedNames());
    Popped popped;
    await(
        [&] {
            take(popped);
            return popped.values >= 2 * streampeer::streamed;
        },
        "the first batches");
}

void StreamBench::stopStream() {
    setPush(atRest);
    require(facade_->stopParamRead(&queue_), "stopParamRead");
    ping();
    queue_.clear();
}

void StreamBench::setPush(const Push& push) {
    const std::vector<double> values = {static_cast<double>(push.window),
                                        static_cast<double>(push.burst), push.periodUs};
    require(facade_->setParamData(streampeer::push, values, {}, {}, timeoutMs), "setParamData");
}

StreamBench::Count StreamBench::acknowledged() {
    common::sleepMs(refreshMs);  // past the library's cache
    require(facade_->getParamData(streampeer::acknowledged, values_, timeoutMs), "getParamData");
    return {values_.at(0), values_.at(1)};
}

double StreamBench::takeFor(unsigned int ms, Popped& popped) {
    Count before = {};
    {
        const auto background = taker();
        before = acknowledged();
    }
    const double startUs = nowUs();
    while (nowUs() - startUs < ms * 1000.0) take(popped);
    const auto background = taker();
    const Count after = acknowledged();
    return (after.us - before.us) / (after.values - before.values);
}

std::unique_ptr<Taker> StreamBench::taker() {
    const auto popped = std::make_shared<Popped>();  // of no interest
    return std::make_unique<Taker>([this, popped] { take(*popped); });
}

void StreamBench::take(Popped& popped) {
    std::vector<QorControlFacade::ParamValue> batch;
    if (!queue_.pop(batch, popMs)) return;
    const double poppedUs = nowUs();
    ++popped.batches;
    for (const auto& each : batch) {
        const double sentUs = each.values.front();
        double& latest = latest_.at(static_cast<std::size_t>(std::stoi(each.name.substr(1))));
        ++popped.values;
        popped.anyAgeUs.add(poppedUs - sentUs);
        if (sentUs == latest) continue;
        latest = sentUs;
        ++popped.news;
        popped.newAgeUs.add(poppedUs - sentUs);
    }
}

void StreamBench::ping() {
    require(facade_->pingQor(timeoutMs), "pingQor");
}

void StreamBench::read() {
    const std::string name = streampeer::readOnlyName(nextRead_);
    nextRead_ = (nextRead_ + 1) % streampeer::readOnly;
    require(facade_->getParamData(name, values_, timeoutMs), "getParamData");
}
