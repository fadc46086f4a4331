#include "Scheduler.h"

#include <algorithm>
#include <utility>

#include "LocalValues.h"

namespace fibers {
namespace {

Scheduler* latest = nullptr;

/// No thread of the scheduler has it.
constexpr unsigned int programId = 1;
/// Nothing takes so many turns without any time.
constexpr std::uint64_t mostTurnsWithoutTime = 1000000;

}  // namespace

Scheduler::Scheduler(unsigned int looksAtOneMoment)
    : before_(latest), looksAtOneMoment_(looksAtOneMoment), program_(programId, nullptr) {
    latest = this;
}

Scheduler::~Scheduler() {
    latest = before_;
}

Scheduler& Scheduler::present() {
    return *latest;
}

Task& Scheduler::start(std::function<void()> body, bool hasHandle) {
    unsigned int id = lastId_ + 4;  // as the system's: never 0, and in fours
    if (!freeIds_.empty() && takesFreeNumber()) {
        id = freeIds_.back();
        freeIds_.pop_back();
    } else {
        lastId_ = id;
    }
    auto task = std::make_unique<Task>(id, [id, body = std::move(body)] {
        body();
        releaseLocalValues(id);
    });
    task->isHandleOpen = hasHandle;
    tasks_.push_back(std::move(task));
    return *tasks_.back();
}

Task* Scheduler::taskOf(unsigned int id) {
    for (const auto& task : tasks_)
        if (task->id == id && !task->fiber.hasEnded()) return task.get();
    return nullptr;
}

std::uintptr_t Scheduler::handleOf(const Task& task) {
    return std::uintptr_t{task.id} * 2 + 1;
}

Task* Scheduler::taskByHandle(std::uintptr_t handle) {
    for (const auto& task : tasks_)
        if (handleOf(*task) == handle && task->isHandleOpen) return task.get();
    return nullptr;
}

void Scheduler::closeHandle(Task& task) {
    task.isHandleOpen = false;
    if (task.fiber.hasEnded()) dropEnded();
}

bool Scheduler::wait(Ms spanMs, const void* object) {
    if (current_ == nullptr) return false;
    Task& task = *current_;
    if (!task.held.empty()) find("a thread waits with a lock held");
    task.isPoll = spanMs <= 1;
    task.due = spanMs == never ? never : now_ + lasting(spanMs);
    task.awaits = object;
    suspend(task);
    task.awaits = nullptr;
    task.looks = task.pumps = 0;
    return task.wasSignalled;
}

void Scheduler::suspend(Task& task) {
    task.isReady = false;
    task.wasSignalled = false;
    task.fiber.leave();
}

bool Scheduler::signal(const void* object, bool all) {
    unsigned int waiting = 0;
    for (const auto& task : tasks_)
        if (!task->isReady && task->awaits == object) ++waiting;
    if (waiting == 0) return false;
    unsigned int chosen = all || waiting == 1 ? 0 : chooseWaiting(waiting);
    for (const auto& task : tasks_) {
        if (task->isReady || task->awaits != object) continue;
        if (!all && chosen-- != 0) continue;
        task->isReady = task->wasSignalled = true;
        if (!all) break;
    }
    return true;
}

void Scheduler::mayPreempt() {
    if (current_ == nullptr) return;
    const std::optional<Ms> pauseMs = interruption();
    if (!pauseMs) return;
    if (*pauseMs == 0) return current_->fiber.leave();
    Task& task = *current_;
    task.isPoll = false;
    task.due = now_ + *pauseMs;
    suspend(task);
}

void Scheduler::spin(unsigned int& looks, unsigned int allowed) {
    if (current().held.empty() && ++looks > allowed) wait(1, nullptr);
}

bool Scheduler::run() {
    while (!tasks_.empty()) {
        ready_.clear();
        for (const auto& task : tasks_)
            if (task->isReady) ready_.push_back(task.get());
        if (!ready_.empty() && turnsWithoutTime_ <= mostTurnsWithoutTime) {
            enter(choose(ready_));
            continue;
        }
        if (!ready_.empty()) find("threads keep each other busy for ever");
        turnsWithoutTime_ = 0;
        if (!letTimePass()) return false;
    }
    return true;
}

void Scheduler::enter(Task& task) {
    ++turnsWithoutTime_;
    onTurn(task);
    current_ = &task;
    task.fiber.enter();
    current_ = nullptr;
    if (!task.fiber.hasEnded()) return;
    task.isReady = false;
    task.due = never;
    task.awaits = nullptr;
    dropEnded();
}

void Scheduler::dropEnded() {
    for (auto task = tasks_.begin(); task != tasks_.end();) {
        if ((*task)->fiber.hasEnded() && !(*task)->isHandleOpen) {
            freeIds_.push_back((*task)->id);
            task = tasks_.erase(task);
        } else {
            ++task;
        }
    }
}

Ms Scheduler::nextDue(bool withPolls) const {
    Ms next = never;
    for (const auto& task : tasks_)
        if (!task->isReady && (!task->isPoll || withPolls)) next = std::min(next, task->due);
    return next;
}

bool Scheduler::wakeDue() {
    bool isMore = false;
    for (const auto& task : tasks_) {
        if (task->isReady || task->due > now_) continue;
        isMore = isMore || !task->isPoll;
        task->isReady = true;
    }
    return isMore;
}

std::string Scheduler::describeTasks() const {
    std::string all;
    for (const auto& task : tasks_)
        all += " thread " + std::to_string(task->id) +
               (task->fiber.hasEnded() ? " has ended"
                : task->isReady        ? " is ready"
                                       : " waits") +
               ", locks " + std::to_string(task->held.size()) + ";";
    return all;
}

}  // namespace fibers
