#include "script/Script.h"

namespace simulator {

bool Match::fits(const RequestFacts& facts) const {
    return (!id || *id == facts.id) && (!operation || operation == facts.operation) &&
           (!name || *name == facts.name) && (!index || index == facts.index);
}

bool Match::fitsCount(std::uint32_t count) const {
    return (!nth || *nth == count) && (!every || count % *every == 0);
}

Script::Script(std::vector<Rule> rules, std::vector<ScheduledEffect> scheduled,
               std::optional<BootstrapPlan> bootstrap)
    : rules_(std::move(rules)),
      counts_(rules_.size(), 0),
      scheduled_(std::move(scheduled)),
      bootstrap_(bootstrap) {}

const Action& Script::actionFor(const RequestFacts& facts) {
    const Action* decided = nullptr;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        if (!rules_[i].match.fits(facts)) continue;
        ++counts_[i];
        if (decided == nullptr && rules_[i].match.fitsCount(counts_[i])) {
            decided = &rules_[i].action;
        }
    }
    return decided != nullptr ? *decided : normal_;
}

std::vector<TimedEffect> Script::scheduledSince(Since since) const {
    std::vector<TimedEffect> effects;
    for (const ScheduledEffect& scheduled : scheduled_) {
        if (scheduled.since == since) effects.push_back(scheduled.timed);
    }
    return effects;
}

}  // namespace simulator
