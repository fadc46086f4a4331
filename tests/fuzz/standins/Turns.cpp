#include "Turns.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Target.h"

namespace turns {
namespace {

using fibers::Ms;
using fibers::Task;

constexpr std::uint32_t firstTick = 1000000;
/// Waits are long, and what polls polls often: when all wait, so much passes at least.
constexpr Ms stepMs = 25;
constexpr unsigned int looksAtOneMoment = 3;
constexpr Ms patienceMs = 60000;
/// All calls of an execution together take less.
constexpr Ms longestMs = 3 * 3600000;

class Turns final : public fibers::Scheduler {
public:
    Turns() : Scheduler(looksAtOneMoment) {}

    std::uint32_t tickCount() const override {
        return firstTick + static_cast<std::uint32_t>(now());
    }

    [[noreturn]] void find(const std::string& what) override {
        fuzz::breakOff(what.c_str(), __FILE__, __LINE__);
    }

    /// All others have this long to end.
    void awaitOthers() {
        const Ms endMs = now() + patienceMs;
        const auto runs = [](const auto& task) { return !task->fiber.hasEnded(); };
        while (std::count_if(tasks().begin(), tasks().end(), runs) > 1) {
            if (now() >= endMs) find("threads are left:" + describeTasks());
            wait(stepMs, nullptr);
        }
    }

private:
    /// The next one started behind the one whose turn it was; at last that one itself.
    Task& choose(const std::vector<Task*>& ready) override {
        const auto next = std::find_if(ready.begin(), ready.end(),
                                       [this](const Task* task) { return task->id > lastId_; });
        return next == ready.end() ? *ready.front() : **next;
    }
    void onTurn(const Task& task) override { lastId_ = task.id; }
    Ms lasting(Ms spanMs) override { return std::max<Ms>(spanMs, 1); }
    bool letTimePass() override {
        const Ms nextMs = nextDue(true);
        if (nextMs == fibers::never) return false;
        if (now() > longestMs) find("an execution has no end");
        setNow(std::max(nextMs, now() + stepMs));
        wakeDue();
        return true;
    }

    unsigned int lastId_ = 0;
};

/// For what is called outside of executions. It stays to the end of the process: what is cleared up
/// there makes kernel calls, too.
const Turns* const outside = new Turns;

}  // namespace

void execute(const std::function<void()>& body) {
    Turns turns;
    turns.start([&] {
        body();
        turns.awaitOthers();
    });
    if (!turns.run()) turns.find("threads or their handles are left:" + turns.describeTasks());
}

void spawn(std::function<void()> body) {
    fibers::Scheduler::present().start(std::move(body));
}

Ms nowMs() {
    return fibers::Scheduler::present().now();
}

void pause(Ms ms) {
    fibers::Scheduler::present().wait(ms, nullptr);
}

}  // namespace turns
