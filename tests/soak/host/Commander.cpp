#include "Commander.h"

#include <sstream>

#include "qorcontrol/Outcome.h"
#include "qorcontrol/Waiting.h"
#include "Stamps.h"
#include "support/HandleCensus.h"
#include "support/TcpProcessFigures.h"

namespace soak {

namespace {

constexpr unsigned restMs = 40000;
constexpr unsigned givenUpMs = 20000;
constexpr unsigned pingMs = 250;
constexpr unsigned connectMs = 5000;

/// Gives a connect up that takes too long, as when QOR dies in the middle of it.
class Patience : public IProgressMonitor {
public:
    bool isCancelled() override { return nowUs() > endUs_; }
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string&, unsigned int) override {}

private:
    const std::uint64_t endUs_ = nowUs() + connectMs * 1000;
};

QorControlFacade::EcuConnect ecuWith(unsigned refreshPeriodMs) {
    return {1,    1,   true, 10400, 125000, refreshPeriodMs, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF,
            0xFF, 255, true, "",    true};
}

}  // namespace

Commander::Commander(Report& report, const HostSettings& settings)
    : report_(report),
      settings_(settings),
      judge_(report, settings.graceMs),
      load_(report, judge_, settings.seed, settings.threads),
      streams_(judge_, report),
      boxes_(report, settings.boxCaption) {}

bool Commander::carryOut(const std::string& line) {
    std::istringstream words(line);
    std::string order, rest;
    words >> order;
    std::getline(words >> std::ws, rest);
    ++step_;
    report_.line("= " + answer(order, rest));
    return order != "end";
}

std::string Commander::answer(const std::string& order, const std::string& rest) {
    if (order == "open") return openFacade(rest);
    if (order == "close" || order == "end") return closeFacade();
    if (order == "clock") return std::to_string(nowUs());
    if (order == "recover") return recover(rest);
    if (order == "await") return await();
    if (order == "connect") return connect(rest);
    if (order == "quiet") return quiet();
    if (order == "census") return takeCensus();
    if (order == "counts") return state();
    if (order == "strict") {
        judge_.isStrict = rest == "1";
        return "done";
    }
    if (order == "life") {
        judge_.life = static_cast<unsigned>(std::strtoul(rest.c_str(), nullptr, 10));
        return "done";
    }
    if (order == "streams") return stream(rest == "1");
    if (order == "warm") {
        load_.warmUp(*qor_);
        return "done";
    }
    if (order == "segment") {
        const bool ok =
            qor_->setEcuSegment(QorControlFacade::getEdcRamSegmentName(), true, nullptr);
        return ok ? "done" : "failed";
    }
    if (order == "verify") {
        load_.verify(*qor_, "step " + rest);
        return "done";
    }
    if (order == "load") {
        load_.begin(*qor_, rest == "crowd" ? Load::Mode::crowd : Load::Mode::few);
        return "done";
    }
    return "unknown order " + order;
}

std::string Commander::openFacade(const std::string& way) {
    qor_ =
        std::make_unique<QorControlFacade>(settings_.settingsPath, nullptr, 0, settings_.hostPath);
    boxes_.begin(*qor_, static_cast<unsigned>(std::strtoul(way.c_str(), nullptr, 10)));
    return "done";
}

std::string Commander::closeFacade() {
    if (qor_ == nullptr) return "done";
    if (!load_.rest(restMs)) return "stuck " + load_.busy();
    const bool isEnded = streams_.end();
    boxes_.end();
    const std::uint64_t startUs = nowUs();
    qor_.reset();
    return (isEnded ? "done " : "streams left ") + std::to_string((nowUs() - startUs) / 1000);
}

// QOR is there and does nothing wrong.
std::string Commander::stream(bool wanted) {
    if (wanted)
        streams_.begin(*qor_);
    else
        judge_.expect(streams_.end(), "order " + std::to_string(step_), "streams do not end");
    return "done";
}

// Nobody else asks meanwhile.
std::string Commander::recover(const std::string& sinceText) {
    const std::uint64_t sinceUs = std::strtoull(sinceText.c_str(), nullptr, 10);
    while (nowUs() - sinceUs < givenUpMs * 1000) {
        if (!qor_->pingQor(pingMs)) continue;
        judge_.recovered("order " + std::to_string(step_), sinceUs);
        return "done " + std::to_string((nowUs() - sinceUs) / 1000);
    }
    report_.breach(
        "order " + std::to_string(step_),
        "no request works although QOR can be reached: " + qorcontrol::lastOutcome().sentence);
    return "never";
}

// A QOR that the library starts by itself takes as long as it takes.
std::string Commander::await() {
    const std::uint64_t startUs = nowUs();
    while (nowUs() - startUs < givenUpMs * 1000)
        if (qor_->pingQor(pingMs)) return "done";
    return "never " + qorcontrol::lastOutcome().sentence;
}

// The cache and QOR's streams go by the period.
std::string Commander::connect(const std::string& periodText) {
    const auto periodMs = static_cast<unsigned>(std::strtoul(periodText.c_str(), nullptr, 10));
    judge_.allowAnyAge();
    Patience patience;
    const std::uint64_t startUs = nowUs();
    std::string failures;
    const auto note = [&](const char* what, bool ok) {
        if (ok) return;
        const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();
        failures += std::string(" ") + what + " after " +
                    std::to_string((nowUs() - startUs) / 1000) + " ms: cause " +
                    std::to_string(static_cast<int>(outcome.cause)) + ", " + outcome.sentence;
    };
    note("connect",
         qor_->connect(ecuWith(periodMs), QorControlFacade::EcuConnect::Default, &patience));
    const QorControlFacade::CanBusConnect bus = {250000, true, false};
    note("connectCanBus",
         qorcontrol::connectCanBusAndWait(*qor_, bus, QorControlFacade::EcuConnect::Default));
    judge_.beginCache(periodMs);
    return failures.empty() ? "done" : "failed:" + failures;
}

std::string Commander::quiet() {
    if (load_.rest(restMs)) return "done";
    const std::string busy = load_.busy();
    report_.breach("order " + std::to_string(step_), "calls that do not come back: " + busy);
    return "stuck " + busy;
}

std::string Commander::takeCensus() {
    std::string text = R"({"threads":)" + std::to_string(tcp::threadCount()) + R"(,"heap":)" +
                       std::to_string(tcp::heapBytes()) + R"(,"private":)" +
                       std::to_string(tcp::memoryBytes()) + R"(,"handles":{)";
    bool isFirst = true;
    for (const auto& [type, count] : countHandles()) {
        text += (isFirst ? "\"" : ",\"") + type + "\":" + std::to_string(count);
        isFirst = false;
    }
    return text + "}}";
}

std::string Commander::state() {
    std::string counts = judge_.countsAsJson();
    counts.pop_back();
    return counts + R"(,"streamed":)" + std::to_string(streams_.values()) + R"(,"pressed":)" +
           std::to_string(boxes_.pressed()) + R"(,"boxes":)" + std::to_string(boxes_.told()) +
           R"(,"breaches":)" + std::to_string(report_.breaches()) + "}";
}

}  // namespace soak
