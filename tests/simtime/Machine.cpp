#include "Machine.h"

#include <algorithm>

namespace simtime {
namespace {

Machine* running = nullptr;

/// So long behind each event threads poll as they do while something is under way.
constexpr Ms settleMs = 40;
/// No call lasts so long.
constexpr Ms longestBusyMs = 3600000;
constexpr std::size_t keptFindings = 20;
/// Nothing takes so many turns without any time.
constexpr std::uint64_t turnsWithoutTime = 1000000;

}  // namespace

Machine::Machine(std::uint64_t seed, Manners manners) : random_(seed), manners_(manners) {
    running = this;
}

Machine::~Machine() {
    running = nullptr;
}

Machine& Machine::present() {
    return *running;
}

std::uint32_t Machine::tickCount() const {
    const Ms moment = manners_.firstTick + now_;
    return static_cast<std::uint32_t>(moment - moment % manners_.tickStepMs);
}

Task& Machine::start(std::function<std::uint32_t()> body, bool hasHandle) {
    unsigned int id = lastId_ + 4;  // as the system's: never 0, and in fours
    if (!freeIds_.empty() && random_.oneIn(2)) {
        id = freeIds_.back();
        freeIds_.pop_back();
    } else {
        lastId_ = id;
    }
    auto task =
        std::make_unique<Task>(id, [this, body = std::move(body)] { current_->exitCode = body(); });
    task->isHandleOpen = hasHandle;
    tasks_.push_back(std::move(task));
    return *tasks_.back();
}

Task* Machine::find(unsigned int id) {
    for (const auto& task : tasks_)
        if (task->id == id && !task->fiber.hasEnded()) return task.get();
    return nullptr;
}

std::uintptr_t Machine::handleOf(const Task& task) {
    return std::uintptr_t{task.id} * 2 + 1;
}

Task* Machine::findByHandle(std::uintptr_t handle) {
    for (const auto& task : tasks_)
        if (handleOf(*task) == handle && task->isHandleOpen) return task.get();
    return nullptr;
}

void Machine::closeHandle(Task& task) {
    task.isHandleOpen = false;
    if (task.fiber.hasEnded()) dropEnded();
}

void Machine::at(Ms when, std::function<void()> act) {
    acts_.emplace(std::make_pair(std::max(when, now_), ++lastAct_), std::move(act));
}

bool Machine::wait(Ms spanMs, const void* object) {
    Task& task = *current_;
    task.isPoll = spanMs <= 1;
    task.due = spanMs == never ? never : now_ + spanMs + random_.below(manners_.lateMs + 1);
    task.awaits = object;
    suspend(task);
    task.awaits = nullptr;
    task.looksAtClock = task.pumps = 0;
    return task.wasSignalled;
}

void Machine::suspend(Task& task) {
    task.isReady = false;
    task.wasSignalled = false;
    task.fiber.leave();
}

bool Machine::signal(const void* object, bool all) {
    unsigned int waiting = 0;
    for (const auto& task : tasks_)
        if (!task->isReady && task->awaits == object) ++waiting;
    if (waiting == 0) return false;
    unsigned int chosen = all || waiting == 1 ? 0 : random_.below(waiting);
    for (const auto& task : tasks_) {
        if (task->isReady || task->awaits != object) continue;
        if (!all && chosen-- != 0) continue;
        task->isReady = task->wasSignalled = true;
        if (!all) break;
    }
    return true;
}

void Machine::mayPreempt() {
    if (current_ == nullptr || !random_.oneIn(manners_.preemption)) return;
    // Now and then for longer than a turn of the others.
    if (random_.oneIn(32)) {
        Task& task = *current_;
        task.isPoll = false;
        task.due = now_ + 1 + random_.below(3);
        suspend(task);
    } else {
        current_->fiber.leave();
    }
}

void Machine::spin(unsigned int& counter, unsigned int allowed) {
    if (++counter > allowed) wait(1, nullptr);
}

bool Machine::run() {
    while (!tasks_.empty()) {
        ready_.clear();
        for (const auto& task : tasks_)
            if (task->isReady) ready_.push_back(task.get());
        if (ready_.empty() || switchesWithoutTime_ > turnsWithoutTime) {
            if (!leap()) return false;
        } else {
            const auto count = static_cast<unsigned int>(ready_.size());
            enter(*ready_[count == 1 ? 0 : random_.below(count)]);
        }
    }
    return true;
}

void Machine::enter(Task& task) {
    ++switches_;
    ++switchesWithoutTime_;
    note(task.id);
    current_ = &task;
    task.fiber.enter();
    current_ = nullptr;
    if (!task.fiber.hasEnded()) return;
    task.isReady = false;
    task.due = never;
    task.awaits = nullptr;
    dropEnded();
}

void Machine::dropEnded() {
    for (auto task = tasks_.begin(); task != tasks_.end();) {
        if ((*task)->fiber.hasEnded() && !(*task)->isHandleOpen) {
            freeIds_.push_back((*task)->id);
            task = tasks_.erase(task);
        } else {
            ++task;
        }
    }
}

Ms Machine::nextMoment() const {
    Ms next = acts_.empty() ? never : acts_.begin()->first.first;
    for (const auto& task : tasks_)
        if (!task->isReady && (!task->isPoll || isBusy())) next = std::min(next, task->due);
    return next;
}

bool Machine::leap() {
    if (switchesWithoutTime_ > turnsWithoutTime) find("threads keep each other busy for ever");
    switchesWithoutTime_ = 0;
    const Ms next = nextMoment();
    if (next == never || (busy_ != 0 && now_ > busySince_ + longestBusyMs)) return false;
    now_ = std::max(now_, next);
    note(now_);
    actDue();
    wakeDue();
    return true;
}

void Machine::actDue() {
    while (!acts_.empty() && acts_.begin()->first.first <= now_) {
        const auto act = std::move(acts_.begin()->second);
        acts_.erase(acts_.begin());
        settled_ = now_ + settleMs;
        act();
    }
}

void Machine::wakeDue() {
    for (const auto& task : tasks_) {
        if (task->isReady || task->due > now_) continue;
        if (!task->isPoll) settled_ = now_ + settleMs;
        task->isReady = true;
    }
}

void Machine::note(std::uint64_t word) {
    hash_ = (hash_ ^ word) * 1099511628211u;
    hash_ ^= hash_ >> 29;
}

void Machine::find(const std::string& what) {
    ++findingCount_;
    if (findings_.size() >= keptFindings) return;
    findings_.push_back("at " + std::to_string(now_) + " ms, tick " + std::to_string(tickCount()) +
                        ": " + what);
}

std::string Machine::describeTasks() const {
    std::string all;
    for (const auto& task : tasks_)
        all += " thread " + std::to_string(task->id) +
               (task->fiber.hasEnded() ? " has ended"
                : task->isReady        ? " is ready"
                                       : " waits") +
               ", locks " + std::to_string(task->held.size()) + ";";
    return all;
}

}  // namespace simtime
