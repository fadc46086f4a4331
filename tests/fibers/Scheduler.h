#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Fiber.h"

namespace fibers {

/// Milliseconds since the beginning of the run.
using Ms = std::uint64_t;
constexpr Ms never = ~Ms{0};

/// One thread of the scheduler.
struct Task {
    Task(unsigned int taskId, std::function<void()> body) : id(taskId), fiber(std::move(body)) {}

    const unsigned int id;
    Fiber fiber;
    bool isReady = true;
    Ms due = never;                // of a wait
    bool isPoll = false;           // the wait asks for a millisecond at most
    const void* awaits = nullptr;  // what may end the wait before
    bool wasSignalled = false;     // how it ended
    unsigned int looks = 0;        // at the clock, since the last wait
    unsigned int pumps = 0;        // the same
    std::uint32_t lastError = 0;
    std::vector<const void*> held;  // locks
    std::uint32_t exitCode = 259;   // "still active"
    bool isHandleOpen = false;
};

/// A machine with one processor, whose threads run one at a time on the one of the program, and
/// whose time is its own: it stands still while code runs. The library's kernel calls (Calls.cpp)
/// are made of this. Who goes on next, what time it is then and what becomes of a finding is the
/// policy of who derives from it.
///
/// A thread that takes a lock while it holds another, or waits while it holds one, is a finding.
class Scheduler {
public:
    virtual ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    /// The latest that there is.
    static Scheduler& present();

    Ms now() const { return now_; }
    virtual std::uint32_t tickCount() const = 0;

    /// A thread that is ready to run.
    Task& start(std::function<void()> body, bool hasHandle = false);
    /// Null if none with this number has not ended.
    Task* taskOf(unsigned int id);
    Task* taskByHandle(std::uintptr_t handle);
    void closeHandle(Task& task);
    static std::uintptr_t handleOf(const Task& task);
    /// Outside of all threads that of the program, which never waits.
    Task& current() { return current_ != nullptr ? *current_ : program_; }

    /// Lets the calling thread wait; true if the object was signalled before.
    bool wait(Ms spanMs, const void* object);
    /// Ends the waits for the object: of one thread, or of all. False if nobody waited.
    bool signal(const void* object, bool all);
    /// Where a real machine might let another thread run.
    void mayPreempt();
    /// In loops that look at something without waiting: so many looks take no time. Whoever holds
    /// a lock does not loop.
    void spin(unsigned int& looks, unsigned int allowed);
    void lookAtClock() { spin(current().looks, looksAtOneMoment_); }

    /// Until all threads have ended. False if they wait for what never comes.
    bool run();

    /// Something is wrong.
    virtual void find(const std::string& what) = 0;

    /// Those that have not ended, or whose handle is open.
    const std::vector<std::unique_ptr<Task>>& tasks() const { return tasks_; }
    std::string describeTasks() const;

protected:
    explicit Scheduler(unsigned int looksAtOneMoment);

    /// @name For the policy
    /// @{
    void setNow(Ms moment) { now_ = moment; }
    /// When the first wait of a thread is over.
    Ms nextDue(bool withPolls) const;
    /// Those whose waits are over can run. Whether one of them was no poll.
    bool wakeDue();
    /// @}

private:
    /// @name The policy
    /// @{
    /// Which of these, at least one, in the order of their start.
    virtual Task& choose(const std::vector<Task*>& ready) = 0;
    virtual void onTurn(const Task&) {}
    /// Which of so many, in the order of their start, gets what only one can have.
    virtual unsigned int chooseWaiting(unsigned int) { return 0; }
    /// Whether a new thread gets the number of one that has ended.
    virtual bool takesFreeNumber() { return false; }
    /// Whether the running thread is interrupted here, and for how long.
    virtual std::optional<Ms> interruption() { return std::nullopt; }
    /// How long a wait takes that may end after so long.
    virtual Ms lasting(Ms spanMs) = 0;
    /// No thread can run, or all do without end. False if nothing will ever happen.
    virtual bool letTimePass() = 0;
    /// @}

    void enter(Task& task);
    void dropEnded();
    void suspend(Task& task);

    Scheduler* const before_;
    const unsigned int looksAtOneMoment_;
    Ms now_ = 0;
    Task program_;
    std::vector<std::unique_ptr<Task>> tasks_;
    std::vector<Task*> ready_;  // of one round, kept for its memory
    std::vector<unsigned int> freeIds_;
    unsigned int lastId_ = 0;
    Task* current_ = nullptr;
    std::uint64_t turnsWithoutTime_ = 0;
};

}  // namespace fibers
