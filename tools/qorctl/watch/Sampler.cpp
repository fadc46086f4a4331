#include "watch/Sampler.h"

#include <algorithm>
#include <cmath>

namespace qorctl {

Sampler::Sampler(const std::vector<std::string>& names, double periodS)
    : periodS_(periodS), wasFresh_(names.size(), false) {
    for (const std::string& name : names) {
        histories_.emplace_back();
        histories_.back().name = name;
    }
}

void Sampler::take(const ValueBatch& batch, double nowS) {
    if (!nextS_ && !batch.empty()) nextS_ = nowS + periodS_;
    for (const auto& value : batch)
        for (ParamHistory& history : histories_)
            if (history.name == value.name && !value.values.empty())
                note(history, value.values.front(), nowS);
}

void Sampler::note(ParamHistory& history, double value, double nowS) const {
    history.isSeen = true;
    history.seenS = nowS;
    history.last = value;
    if (!std::isfinite(value)) return;
    history.lowest = history.hasRange ? std::min(history.lowest, value) : value;
    history.highest = history.hasRange ? std::max(history.highest, value) : value;
    history.hasRange = true;
}

std::optional<Sample> Sampler::sampleAt(double nowS) {
    if (!nextS_ || nowS < *nextS_) return std::nullopt;
    nextS_ = nowS < *nextS_ + periodS_ ? *nextS_ + periodS_ : nowS + periodS_;
    ++samples_;
    Sample sample;
    sample.timeS = nowS;
    for (std::size_t i = 0; i < histories_.size(); ++i) {
        ParamHistory& history = histories_[i];
        const bool fresh = isFresh(history, nowS);
        if (fresh) ++history.samples;
        if (wasFresh_[i] && !fresh) ++history.interruptions;
        wasFresh_[i] = fresh;
        sample.values.push_back(fresh ? std::optional<double>(history.last) : std::nullopt);
    }
    return sample;
}

bool Sampler::isFresh(const ParamHistory& history, double nowS) const {
    return history.isSeen && nowS - history.seenS < periodS_;
}

std::vector<std::string> Sampler::unseen() const {
    std::vector<std::string> names;
    for (const ParamHistory& history : histories_)
        if (!history.isSeen) names.push_back(history.name);
    return names;
}

}  // namespace qorctl
