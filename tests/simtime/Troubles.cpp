// What is done to QOR while hosts call, and what must hold once it is sound again.
#include "facade/FacadeImpl.h"
#include "facade/Quietly.h"
#include "Host.h"
#include "qorcontrol/Outcome.h"
#include "Station.h"

namespace simtime {
namespace {

/// A request finds QOR so long after it listens.
constexpr Ms reconnectMs = 1500;
constexpr Ms slackMs = 100;
/// The library asks every 400 ms, and what it was told holds for two seconds.
constexpr Ms onlineMs = 1500;
constexpr Ms offlineMs = 2000 + 400;

/// Cancels after a time.
class PatientMonitor final : public IProgressMonitor {
public:
    explicit PatientMonitor(Ms end) : end_(end) {}
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    bool isCancelled() override { return Machine::present().now() >= end_; }
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string&, unsigned int) override {}

private:
    const Ms end_;
};

}  // namespace

Mood Station::drawMood() {
    const auto some = [this] { return plan_.oneIn(3) ? plan_.below(40) : 0; };
    Mood mood;
    mood.late = some();
    mood.silent = some();
    mood.refused = some();
    mood.twice = some();
    mood.disordered = some();
    mood.foreign = some();
    mood.cut = some() / 4;
    return mood;
}

void Station::trouble(Trouble what) {
    mood_ = isLate_ ? drawMood() : Mood();
    qor_.setMood(mood_);
    while (hostsAtWork_ != 0) {
        sleep(random().between(20, 700));
        if (hostsAtWork_ == 0) return;
        if (what != Trouble::all)
            troubleOnce(what);
        else
            troubleOnce(static_cast<Trouble>(random().below(static_cast<unsigned int>(what))));
    }
}

void Station::troubleOnce(Trouble what) {
    switch (what) {
        case Trouble::drops:
            qor_.dropConnection(random().oneIn(2));
            break;
        case Trouble::restarts:
            qor_.end(random().oneIn(2));
            sleep(random().below(4000));
            qor_.start();
            break;
        case Trouble::hangs:
            qor_.setHung(true);
            sleep(random().below(6000));
            qor_.setHung(false);
            break;
        case Trouble::lostEcu:
            qor_.setEcuThere(false);
            sleep(random().below(4000));
            qor_.setEcuThere(true);
            break;
        case Trouble::boxes:
            qor_.showBox();
            sleep(longestBoxMs * 2);
            return;
        default:
            return;
    }
    ++report_.faults;
}

void Station::heal() {
    qor_.setMood({});
    qor_.setHung(false);
    qor_.setEcuThere(true);
    qor_.start();
}

void Station::recover() {
    awaitAnswer(reconnectMs + longestMs_ + (hasBoxes_ ? longestBoxMs * 2 : 0));
    mustSucceed_ = true;
    hasBoxes_ = false;
    // What was late may still come, and mark what it is no answer to.
    if (isLate_) sleep(latestAnswerMs * 2);
    isLate_ = false;
    longestMs_ = 0;
    if (!connects(20000)) complain("connect", "failed: " + qorcontrol::lastOutcome().sentence);
    awaitOnline(true, onlineMs);
    qor_.forgetHandled();
    Host(*this, hostCount).callEach();
    checkStreams();
    if (plan_.oneIn(8)) checkLostEcu();
    mustSucceed_ = false;
}

/// From the moment on in which QOR listens.
void Station::awaitAnswer(Ms boundMs) {
    const Ms begin = machine_.now();
    while (!call("first ping", 200, [&] { return facade_->pingQor(100); })) {
        if (machine_.now() - begin > boundMs + slackMs + machine_.manners().lateMs * 10)
            return complain("first ping", "QOR listens since " + std::to_string(begin) + ": " +
                                              qorcontrol::lastOutcome().sentence);
        sleep(1);
    }
}

bool Station::connects(Ms patienceMs) {
    const auto monitor = std::make_shared<PatientMonitor>(machine_.now() + patienceMs);
    constexpr auto type = QorControlFacade::EcuConnect::Default;
    // Pushed out of the full queue, a call that dispatches messages waits for ever.
    return call("connect", 300000, [&] {
        if (mustSucceed_) return facade_->connect(ecu(), type, monitor.get());
        return quietly::connect(FacadeAccess::stateOf(*facade_), ecu(), type, monitor, nullptr);
    });
}

void Station::awaitOnline(bool isOnline, Ms boundMs) {
    const Ms end = machine_.now() + boundMs + slackMs + machine_.manners().tickStepMs;
    while (facade_->isEcuOnline() != isOnline) {
        if (machine_.now() > end)
            return complain("state", isOnline ? "no ECU is seen" : "a lost ECU is still seen");
        sleep(10);
    }
}

void Station::checkLostEcu() {
    ++report_.faults;
    qor_.setEcuThere(false);
    // What QOR had said right before still holds.
    awaitOnline(false, offlineMs);
    qor_.setEcuThere(true);
    awaitOnline(true, onlineMs);
}

/// Streams that were begun with the host go on by themselves, whatever has become of QOR.
void Station::checkStreams() {
    const Ms begin = machine_.now();
    const Ms end = begin + 5000;
    bool isArriving = false;
    bool isFilling = !hasCache();  // a period of a millisecond has nothing fresh
    while (!(isArriving && isFilling)) {
        if (machine_.now() > end)
            return complain("stream", std::string("does not go on:") +
                                          (isArriving ? "" : " arrivals") +
                                          (isFilling ? "" : " queue"));
        isArriving = hasFreshArrival(begin) || isArriving;
        isFilling = hasFreshBatch(begin) || isFilling;
    }
}

bool Station::hasFreshArrival(Ms since) {
    std::vector<qorcontrol::Arrival> values;
    call("arrivals", 50, [&] { return arrivals_->read(values, 50); });
    Ms last = 0;
    for (const auto& value : values) {
        const ValueOrigin origin = ValueOrigin::of(value.value);
        if (origin.param != 2 || origin.kind != ValueOrigin::streamed || origin.made <= last)
            complain("arrivals", "a value of " + std::to_string(origin.made) + " behind one of " +
                                     std::to_string(last));
        last = origin.made;
    }
    return last >= since;
}

bool Station::hasFreshBatch(Ms since) {
    std::vector<QorControlFacade::ParamValue> batch;
    call("queue", 50, [&] { return queue(hostCount).pop(batch, 50) || true; });
    bool isFresh = false;
    for (const auto& value : batch) {
        const ValueOrigin origin = ValueOrigin::of(value.values.at(0));
        if (paramNames[origin.param] != value.name)
            complain("queue", "a value of another than " + value.name);
        isFresh = isFresh || origin.made >= since;
    }
    return isFresh;
}

}  // namespace simtime
