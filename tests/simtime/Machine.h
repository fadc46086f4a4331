#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Fiber.h"
#include "Random.h"

namespace simtime {

/// Milliseconds since the beginning of the run.
using Ms = std::uint64_t;
constexpr Ms never = ~Ms{0};

/// One thread of the simulated machine.
struct Task {
    Task(unsigned int taskId, std::function<void()> body) : id(taskId), fiber(std::move(body)) {}

    const unsigned int id;
    Fiber fiber;
    bool isReady = true;
    Ms due = never;                 // of a wait
    bool isPoll = false;            // the wait asks for a millisecond at most
    const void* awaits = nullptr;   // what may end the wait before
    bool wasSignalled = false;      // how it ended
    unsigned int looksAtClock = 0;  // since the last wait
    unsigned int pumps = 0;         // the same
    std::uint32_t lastError = 0;
    std::vector<const void*> held;  // locks
    std::uint32_t exitCode = 259;   // "still active"
    bool isHandleOpen = false;
};

/// How the simulated machine behaves; drawn from the seed.
struct Manners {
    std::uint32_t firstTick = 0;   ///< what the tick count was at the beginning
    unsigned int tickStepMs = 1;   ///< it moves in such steps
    unsigned int lateMs = 1;       ///< so much later than asked a wait may end
    unsigned int preemption = 64;  ///< one in so many calls of the kernel lets others run
};

/// A machine with one processor, whose threads run one at a time: which one is next only the seed
/// decides. Its time stands still while code runs, and leaps to the next thing that is to happen
/// when all threads wait.
///
/// Threads that wait for a millisecond over and over would make that one step after the other. A
/// wait may take longer than was asked for, so as long as nothing is under way (`Busy`, and a
/// little behind each event) such waits do not count: they end with the next event.
class Machine {
public:
    Machine(std::uint64_t seed, Manners manners);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// The one that runs; there is one at a time.
    static Machine& present();

    Random& random() { return random_; }
    const Manners& manners() const { return manners_; }
    Ms now() const { return now_; }
    std::uint32_t tickCount() const;

    /// A thread that is ready to run. Its number may have been that of one that has ended.
    Task& start(std::function<std::uint32_t()> body, bool hasHandle = false);
    /// Null if none with this number has not ended.
    Task* find(unsigned int id);
    Task* findByHandle(std::uintptr_t handle);
    void closeHandle(Task& task);
    static std::uintptr_t handleOf(const Task& task);
    Task& current() { return *current_; }

    /// Something that happens by itself at a time; it must not wait.
    void at(Ms when, std::function<void()> act);
    /// The same after a time.
    void after(Ms delay, std::function<void()> act) { at(now_ + delay, std::move(act)); }

    /// Lets the calling thread wait; true if the object was signalled before. A poll is a wait
    /// that counts only while something is under way.
    bool wait(Ms spanMs, const void* object);
    /// Ends the waits for the object: of one thread, or of all. False if nobody waited.
    bool signal(const void* object, bool all);
    /// Where a real machine might let another thread run.
    void mayPreempt();
    /// In loops that look at the clock or at messages without waiting.
    void spin(unsigned int& counter, unsigned int allowed);

    /// Until all threads have ended. False if they wait for what never comes.
    bool run();

    /// While one lives, waits of a millisecond count.
    class Busy {
    public:
        Busy() {
            if (present().busy_++ == 0) present().busySince_ = present().now_;
        }
        ~Busy() { --present().busy_; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
    };
    bool isUsed() const { return busy_ != 0; }
    bool isBusy() const { return busy_ != 0 || now_ < settled_; }

    /// Goes into the run's hash.
    void note(std::uint64_t word);
    std::uint64_t hash() const { return hash_; }

    /// Something is wrong.
    void find(const std::string& what);
    const std::vector<std::string>& findings() const { return findings_; }
    std::uint64_t findingCount() const { return findingCount_; }

    std::uint64_t switches() const { return switches_; }
    std::size_t tasks() const { return tasks_.size(); }
    std::string describeTasks() const;
    int events = 0;  ///< that exist

private:
    bool leap();
    Ms nextMoment() const;
    void actDue();
    void wakeDue();
    void enter(Task& task);
    void dropEnded();
    void suspend(Task& task);

    Random random_;
    const Manners manners_;
    Ms now_ = 0;
    Ms settled_ = 0;
    int busy_ = 0;
    Ms busySince_ = 0;
    std::vector<std::unique_ptr<Task>> tasks_;
    std::vector<Task*> ready_;  // of one round, kept for its memory
    std::vector<unsigned int> freeIds_;
    unsigned int lastId_ = 0;
    Task* current_ = nullptr;
    std::map<std::pair<Ms, std::uint64_t>, std::function<void()>> acts_;
    std::uint64_t lastAct_ = 0;
    std::uint64_t hash_ = 14695981039346656037u;
    std::uint64_t switches_ = 0;
    std::uint64_t switchesWithoutTime_ = 0;
    std::vector<std::string> findings_;
    std::uint64_t findingCount_ = 0;
};

}  // namespace simtime
