#include "Station.h"

#include <algorithm>

#include "common/Clock.h"
#include "common/ClockSeam.h"
#include "fibers/Calls.h"
#include "Host.h"
#include "Memory.h"

namespace simtime {
namespace {

constexpr Ms tickRange = Ms{1} << 32;
constexpr Ms hourMs = 3600000;
constexpr Ms slackMs = 50;

Station* running = nullptr;

/// Every third run begins shortly before a wrap of the tick count.
Manners drawManners(Random& random) {
    static constexpr unsigned int steps[] = {1, 10, 16};
    Manners manners;
    manners.firstTick = random.oneIn(3) ? 0u - random.between(10000, 7200000)
                                        : static_cast<std::uint32_t>(random.next());
    manners.tickStepMs = steps[random.below(3)];
    manners.lateMs = random.between(2, 15);
    manners.preemption = 32u << random.below(5);
    return manners;
}

}  // namespace

Station::Station(const Wish& wish)
    : wish_(wish),
      plan_(wish.seed ^ 0x5EEDu),
      machine_(wish.seed, drawManners(plan_)),
      qor_(static_cast<Qor::Naming>(plan_.below(3)), plan_.between(20, 100)),
      periodMs_(plan_.oneIn(2) ? 1 : 400) {
    running = this;
    common::replaceClock(nullptr);  // its moments begin anew
}

Station::~Station() {
    running = nullptr;
}

Station& Station::present() {
    return *running;
}

ParamQueue& Station::queue(unsigned int host) {
    // Their addresses stand in one order in every run.
    static ParamQueue queues[hostCount + 1] = {ParamQueue(4), ParamQueue(4), ParamQueue(4),
                                               ParamQueue(4), ParamQueue(4)};
    return queues[host];
}

DtcQueue& Station::dtcQueue() {
    static DtcQueue queue(2);
    return queue;
}

Report Station::run() {
    machine_.start([this] { direct(); });
    for (unsigned int number = 0; number < hostCount; ++number)
        machine_.start([this, number] { host(number); });
    if (!machine_.run()) machine_.find("all wait for ever:" + machine_.describeTasks());
    judgeMemory();
    report_.simulatedMs = machine_.now();
    report_.wraps = wrapsUntil(machine_.now());
    report_.faults += qor_.faults();
    report_.hash = machine_.hash();
    report_.findingCount = machine_.findingCount();
    report_.findings = machine_.findings();
    return report_;
}

unsigned int Station::wrapsUntil(Ms moment) const {
    return static_cast<unsigned int>((machine_.manners().firstTick + moment) / tickRange);
}

void Station::endCall(const char* name, Ms begin, Ms budgetMs, bool succeeded) {
    const Ms now = machine_.now();
    const Ms took = now - begin;
    ++report_.calls;
    if (!succeeded) ++report_.failedCalls;
    if (wrapsUntil(now) != wrapsUntil(begin)) ++report_.wrapsUnderCalls;
    machine_.note(took * 2 + (succeeded ? 1 : 0));
    if (took > budgetMs + slackMs + machine_.manners().lateMs + machine_.manners().tickStepMs)
        complain(name, "took " + std::to_string(took) + " ms of " + std::to_string(budgetMs));
}

void Station::complain(const char* name, const std::string& what) {
    machine_.find(std::string(name) + ": " + what + " (" + describeTrouble() + ")");
}

std::string Station::describeTrouble() const {
    static constexpr const char* names[troubleCount] = {
        "no trouble", "moods",         "lost connections", "restarts",        "a QOR that hangs",
        "a lost ECU", "message boxes", "all troubles",     "an idle restart", "a new host"};
    return names[static_cast<unsigned int>(trouble_)] + mood_.describe();
}

Ms Station::oldestCachedMs() const {
    return periodMs_ / 2 + slackMs * 2 + (isLate_ ? latestAnswerMs : 0) +
           (hasBoxes_ ? longestBoxMs * 2 : 0);
}

QorControlFacade::EcuConnect Station::ecu() const {
    return {1, 1, true, 10400, 125000, periodMs_, ~0u, ~0u, 255, 255, 255, true, "", true};
}

void Station::direct() {
    qor_.start();
    beginHost();
    recover();
    while (machine_.now() < wish_.spanMs) {
        episode(drawTrouble());
        beQuiet();
    }
    isOver_ = true;
    machine_.signal(&callsToDo_, true);
    endHost();
    if (fibers::openEvents() > 400)
        complain("events", std::to_string(fibers::openEvents()) + " are left");
}

void Station::beginHost() {
    facade_ = std::make_unique<QorControlFacade>("/simulated", nullptr, periodMs_, "");
    facade_->startParamRead(&queue(hostCount), {paramNames[0], paramNames[1]});
    arrivals_.emplace(*facade_, std::vector<std::string>{paramNames[2]}, 64);
}

void Station::endHost() {
    const Machine::Busy busy;
    facade_->stopParamRead(&queue(hostCount));
    arrivals_.reset();
    const Ms begin = machine_.now();
    facade_.reset();
    const Ms took = machine_.now() - begin;
    if (took > 101 * (50 + machine_.manners().lateMs) + slackMs)
        complain("shutdown", "took " + std::to_string(took) + " ms");
}

void Station::sleep(Ms ms) {
    machine_.wait(ms + 2, nullptr);  // a shorter one would be a poll
}

/// Hours without any call; the next episode begins so that it lies across the next wrap.
void Station::beQuiet() {
    Ms quiet = plan_.oneIn(3) ? plan_.between(100, 60000)
                              : 1000 * static_cast<Ms>(plan_.between(60, 4 * 3600));
    const Ms tick = machine_.manners().firstTick + machine_.now();
    const Ms untilWrap = tickRange - tick % tickRange;
    if (untilWrap > 4000 && quiet + hourMs / 60 > untilWrap)
        quiet = untilWrap - plan_.between(100, 1500);
    isBeforeWrap_ = quiet < untilWrap && quiet + 3500 > untilWrap;
    sleep(quiet);
}

Trouble Station::drawTrouble() {
    return static_cast<Trouble>(plan_.below(troubleCount));
}

void Station::startHosts(unsigned int calls) {
    callsToDo_ = calls;
    ++rounds_;
    hostsAtWork_ = hostCount;
    machine_.signal(&callsToDo_, true);
}

void Station::host(unsigned int number) {
    Host host(*this, number);
    for (std::uint64_t round = 0;; ++round) {
        while (rounds_ == round && !isOver_) machine_.wait(never, &callsToDo_);
        if (isOver_) return;
        for (unsigned int call = 0; call < callsToDo_; ++call) {
            host.callAny();
            if (!isBeforeWrap_ && random().oneIn(2)) sleep(random().below(80));
        }
        host.endStreams();
        --hostsAtWork_;
    }
}

void Station::episode(Trouble what) {
    ++report_.episodes;
    trouble_ = what;
    qor_.forgetHandled();
    longestMs_ = 0;
    mustSucceed_ = what == Trouble::none;
    hasBoxes_ = what == Trouble::boxes || what == Trouble::all;
    isLate_ = what == Trouble::moods || what == Trouble::all;
    if (what == Trouble::idleRestart) {
        qor_.end(random().oneIn(2));
        ++report_.faults;
        sleep(random().below(5000));
    } else if (what == Trouble::newHost) {
        restartHost();
    } else {
        const unsigned int boxesBefore = qor_.boxesShown() - qor_.boxesAnswered();
        startHosts(isBeforeWrap_ ? 30 : plan_.between(3, 12));
        trouble(what);
        if (what == Trouble::boxes) sleep(longestBoxMs * 4);
        if (what == Trouble::boxes && qor_.boxesShown() - qor_.boxesAnswered() != boxesBefore)
            complain("box", "QOR has not been told of the operator's choice");
    }
    heal();
    recover();
    measureMemory();
}

void Station::restartHost() {
    endHost();
    // One that had to be let go comes to its end by itself.
    sleep(machine_.tasks().size() > hostCount + 1 ? 120000 : 3000);
    if (machine_.tasks().size() != hostCount + 1)
        complain("shutdown", "threads are left:" + machine_.describeTasks());
    ++report_.restarts;
    beginHost();
}

void Station::measureMemory() {
    memory_.push_back(allocatedBytes());
}

/// What the library keeps on purpose (places of threads, the last of everything) is there after the
/// first third.
void Station::judgeMemory() {
    constexpr std::size_t least = 40;  // of the three days of the short form there are 43 to 70
    constexpr std::size_t allowed = 32768;
    report_.isMemoryJudged = memory_.size() >= least;
    if (!report_.isMemoryJudged) return;
    const auto third = static_cast<std::ptrdiff_t>(memory_.size() / 3);
    const auto tenth = static_cast<std::ptrdiff_t>(memory_.size() / 10);
    const std::size_t before = *std::max_element(memory_.begin(), memory_.begin() + third);
    const std::size_t behind = *std::min_element(memory_.end() - tenth, memory_.end());
    if (behind > before + allowed)
        complain("memory", "grew from " + std::to_string(before) + " to " + std::to_string(behind) +
                               " bytes");
}

}  // namespace simtime
