#include "StreamBench.h"

#include "common/Deadline.h"
#include "Require.h"

namespace {

constexpr unsigned int timeoutMs = 2000;
constexpr unsigned int refreshMs = 100;
constexpr unsigned int popMs = 20;

std::vector<std::string> streamedNames() {
    std::vector<std::string> names;
    names.reserve(barepeer::streamed);
    for (int i = 0; i < barepeer::streamed; ++i) names.push_back(barepeer::streamedName(i));
    return names;
}

}  // namespace

StreamBench::StreamBench(Transport transport) : peer_(transport, refreshMs, "stream") {
    // From here on every name is known.
    setPush(atRest);
    acknowledged();
    for (int i = 0; i < barepeer::readOnly; ++i) read();
}

void StreamBench::startStream() {
    setPush({0, barepeer::streamed, 50000});
    peer_.facade().startParamRead(&queue_, streamedNames());
    Popped popped;
    await(
        [&] {
            take(popped);
            return popped.values >= 2 * barepeer::streamed;
        },
        "the first batches");
}

void StreamBench::stopStream() {
    setPush(atRest);
    require(peer_.facade().stopParamRead(&queue_), "stopParamRead");
    ping();
    queue_.clear();
}

void StreamBench::setPush(const Push& push) {
    const std::vector<double> values = {static_cast<double>(push.window),
                                        static_cast<double>(push.burst), push.periodUs};
    require(peer_.facade().setParamData(barepeer::push, values, {}, {}, timeoutMs), "setParamData");
}

StreamBench::Count StreamBench::acknowledged() {
    common::sleepMs(refreshMs);  // past the library's cache
    peer_.read(barepeer::acknowledged);
    return {peer_.lastRead().at(0), peer_.lastRead().at(1)};
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
    peer_.ping();
}

void StreamBench::read() {
    peer_.read(barepeer::readOnlyName(nextRead_));
    nextRead_ = (nextRead_ + 1) % barepeer::readOnly;
}
