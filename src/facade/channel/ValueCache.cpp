#include "facade/channel/ValueCache.h"

#include <utility>

#include "common/Clock.h"

namespace channel {

void ValueCache::setReadPeriod(std::uint32_t periodMs) {
    state_.lock()->readPeriodMs = periodMs;
}

std::uint32_t ValueCache::readPeriodMs() {
    return state_.lock()->readPeriodMs;
}

bool ValueCache::find(const std::string& name, std::vector<double>& values,
                      std::vector<double>& second, std::vector<double>& third,
                      bool& mayBelongToEarlier) {
    CachedValue cached;
    {
        const auto state = state_.lock();
        const auto found = state->paramValueCache.find(name);
        if (found == state->paramValueCache.end()) return false;
        if (found->second.stamp <= state->begin) return false;
        const common::Moment end = found->second.stamp + state->readPeriodMs / 2;
        if (common::now() >= end) return false;
        cached = found->second;
    }
    // Others need not wait for the copies, which may be long.
    values = cached.values.all();
    second = cached.second.all();
    third = cached.third.all();
    mayBelongToEarlier = cached.mayBelongToEarlier;
    return true;
}

std::map<std::string, CachedValue> ValueCache::all() {
    return state_.lock()->paramValueCache;
}

void ValueCache::store(const std::string& name, CachedValue value) {
    state_.lock()->paramValueCache[name] = std::move(value);
}

void ValueCache::beginAnew() {
    state_.lock()->begin = common::now();
}

bool ValueCache::isYoungerThan(std::uint32_t periods, common::Moment arrival) {
    const common::Moment end = arrival + periods * state_.lock()->readPeriodMs;
    return end > common::now();
}

}  // namespace channel
