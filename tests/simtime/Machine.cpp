#include "Machine.h"

#include <algorithm>

namespace simtime {
namespace {

constexpr unsigned int looksAtOneMoment = 200;
/// So long behind each event threads poll as they do while something is under way.
constexpr Ms settleMs = 40;
/// No call lasts so long.
constexpr Ms longestBusyMs = 3600000;
constexpr std::size_t keptFindings = 20;

}  // namespace

Machine::Machine(std::uint64_t seed, Manners manners)
    : Scheduler(looksAtOneMoment), random_(seed), manners_(manners) {}

std::uint32_t Machine::tickCount() const {
    const Ms moment = manners_.firstTick + now();
    return static_cast<std::uint32_t>(moment - moment % manners_.tickStepMs);
}

void Machine::at(Ms when, std::function<void()> act) {
    acts_.emplace(std::make_pair(std::max(when, now()), ++lastAct_), std::move(act));
}

fibers::Task& Machine::choose(const std::vector<fibers::Task*>& ready) {
    const auto count = static_cast<unsigned int>(ready.size());
    return *ready[count == 1 ? 0 : random_.below(count)];
}

std::optional<Ms> Machine::interruption() {
    if (!random_.oneIn(manners_.preemption)) return std::nullopt;
    // Now and then for longer than a turn of the others.
    return random_.oneIn(32) ? 1 + random_.below(3) : 0;
}

bool Machine::letTimePass() {
    const bool pollsCount = busy_ != 0 || now() < settled_;
    const Ms nextAct = acts_.empty() ? never : acts_.begin()->first.first;
    const Ms next = std::min(nextAct, nextDue(pollsCount));
    if (next == never || (busy_ != 0 && now() > busySince_ + longestBusyMs)) return false;
    setNow(std::max(now(), next));
    note(now());
    actDue();
    if (wakeDue()) settled_ = now() + settleMs;
    return true;
}

void Machine::actDue() {
    while (!acts_.empty() && acts_.begin()->first.first <= now()) {
        const auto act = std::move(acts_.begin()->second);
        acts_.erase(acts_.begin());
        settled_ = now() + settleMs;
        act();
    }
}

void Machine::note(std::uint64_t word) {
    hash_ = (hash_ ^ word) * 1099511628211u;
    hash_ ^= hash_ >> 29;
}

void Machine::find(const std::string& what) {
    ++findingCount_;
    if (findings_.size() >= keptFindings) return;
    findings_.push_back("at " + std::to_string(now()) + " ms, tick " + std::to_string(tickCount()) +
                        ": " + what);
}

}  // namespace simtime
