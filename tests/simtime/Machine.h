#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fibers/Scheduler.h"
#include "Random.h"

namespace simtime {

using fibers::Ms;
using fibers::never;

/// How the simulated machine behaves; drawn from the seed.
struct Manners {
    std::uint32_t firstTick = 0;   ///< what the tick count was at the beginning
    unsigned int tickStepMs = 1;   ///< it moves in such steps
    unsigned int lateMs = 1;       ///< so much later than asked a wait may end
    unsigned int preemption = 64;  ///< one in so many calls of the kernel lets others run
};

/// The policy of simulated time: which thread is next only the seed decides, and when all wait,
/// time leaps to the next thing that is to happen.
///
/// Threads that wait for a millisecond over and over would make that one step after the other. A
/// wait may take longer than was asked for, so as long as nothing is under way (`Busy`, and a
/// little behind each event) such waits do not count: they end with the next event.
class Machine final : public fibers::Scheduler {
public:
    Machine(std::uint64_t seed, Manners manners);

    /// The one that runs; there is one at a time.
    static Machine& present() { return static_cast<Machine&>(Scheduler::present()); }

    Random& random() { return random_; }
    const Manners& manners() const { return manners_; }
    std::uint32_t tickCount() const override;

    /// Something that happens by itself at a time; it must not wait.
    void at(Ms when, std::function<void()> act);
    /// The same after a time.
    void after(Ms delay, std::function<void()> act) { at(now() + delay, std::move(act)); }

    /// While one lives, waits of a millisecond count.
    class Busy {
    public:
        Busy() {
            if (present().busy_++ == 0) present().busySince_ = present().now();
        }
        ~Busy() { --present().busy_; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
    };
    bool isUsed() const { return busy_ != 0; }

    /// Goes into the run's hash.
    void note(std::uint64_t word);
    std::uint64_t hash() const { return hash_; }

    /// It is kept, up to a number.
    void find(const std::string& what) override;
    const std::vector<std::string>& findings() const { return findings_; }
    std::uint64_t findingCount() const { return findingCount_; }

private:
    fibers::Task& choose(const std::vector<fibers::Task*>& ready) override;
    void onTurn(const fibers::Task& task) override { note(task.id); }
    unsigned int chooseWaiting(unsigned int count) override { return random_.below(count); }
    bool takesFreeNumber() override { return random_.oneIn(2); }
    std::optional<Ms> interruption() override;
    Ms lasting(Ms spanMs) override { return spanMs + random_.below(manners_.lateMs + 1); }
    bool letTimePass() override;

    void actDue();

    Random random_;
    const Manners manners_;
    Ms settled_ = 0;
    int busy_ = 0;
    Ms busySince_ = 0;
    std::map<std::pair<Ms, std::uint64_t>, std::function<void()>> acts_;
    std::uint64_t lastAct_ = 0;
    std::uint64_t hash_ = 14695981039346656037u;
    std::vector<std::string> findings_;
    std::uint64_t findingCount_ = 0;
};

}  // namespace simtime
