#include "watch/Sampler.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qorctl {
namespace {

// One reading that is late is none that is missing.
constexpr double textStaleS = 3 * Sampler::textPeriodS;

}  // namespace

Sampler::Sampler(const std::vector<std::string>& names, double staleAfterS)
    : staleAfterS_(staleAfterS) {
    for (const std::string& name : names) {
        histories_.emplace_back();
        histories_.back().name = name;
    }
}

void Sampler::take(std::size_t name, double value, unsigned int missed, double timeS) {
    if (open_ && (open_->timeS != timeS || open_->values[name])) completeOpen();
    if (!open_) {
        tellStalls(timeS);
        completeTexts(timeS);
        open_ = Sample{timeS, std::vector<std::optional<double>>(histories_.size())};
    }
    open_->values[name] = value;
    histories_[name].missed = missed;
    note(histories_[name], value, timeS);
}

void Sampler::takeText(std::size_t name, const std::string& text, double timeS) {
    ParamHistory& history = histories_[name];
    const bool isNew = !history.isSeen || history.text != text;
    history.isText = history.isSeen = true;
    history.seenS = timeS;
    history.text = text;
    if (!isNew) return;
    ++history.samples;
    texts_.push_back({timeS, std::vector<std::optional<double>>(histories_.size())});
    texts_.back().texts[name] = text;
}

void Sampler::settle(double nowS) {
    const double settledS = nowS - handOnS;
    if (open_ && open_->timeS < settledS) completeOpen();
    if (open_) return;
    tellStalls(settledS);
    completeTexts(settledS);
}

void Sampler::finish() {
    if (open_) completeOpen();
    completeTexts(std::numeric_limits<double>::infinity());
}

std::optional<Sample> Sampler::next() {
    if (complete_.empty()) return std::nullopt;
    std::optional<Sample> sample = std::move(complete_.front());
    complete_.pop_front();
    return sample;
}

void Sampler::completeOpen() {
    complete_.push_back(std::move(*open_));
    open_.reset();
    ++samples_;
}

void Sampler::completeTexts(double beforeS) {
    for (; !texts_.empty() && texts_.front().timeS < beforeS; texts_.pop_front()) {
        complete_.push_back(std::move(texts_.front()));
        ++samples_;
    }
}

/// In the order in which they were due.
void Sampler::tellStalls(double nowS) {
    std::vector<std::size_t> due;
    for (std::size_t i = 0; i < histories_.size(); ++i)
        if (histories_[i].isSeen && !histories_[i].isText && !histories_[i].isStalled &&
            !isFresh(histories_[i], nowS))
            due.push_back(i);
    std::stable_sort(due.begin(), due.end(), [this](std::size_t one, std::size_t other) {
        return histories_[one].seenS < histories_[other].seenS;
    });
    for (const std::size_t i : due) {
        ParamHistory& history = histories_[i];
        history.isStalled = true;
        ++history.interruptions;
        complete_.push_back({history.seenS + staleAfterS_,
                             std::vector<std::optional<double>>(histories_.size()),
                             {i}});
    }
}

void Sampler::note(ParamHistory& history, double value, double timeS) {
    history.isSeen = true;
    history.isStalled = false;
    history.seenS = timeS;
    history.last = value;
    ++history.samples;
    if (!std::isfinite(value)) return;
    history.lowest = history.hasRange ? std::min(history.lowest, value) : value;
    history.highest = history.hasRange ? std::max(history.highest, value) : value;
    history.hasRange = true;
}

bool Sampler::isFresh(const ParamHistory& history, double nowS) const {
    return history.isSeen && nowS - history.seenS < (history.isText ? textStaleS : staleAfterS_);
}

std::vector<std::string> Sampler::unseen() const {
    std::vector<std::string> names;
    for (const ParamHistory& history : histories_)
        if (!history.isSeen) names.push_back(history.name);
    return names;
}

std::vector<std::string> Sampler::silentSince(double sinceS) const {
    std::vector<std::string> names;
    for (const ParamHistory& history : histories_)
        if (history.isSeen && history.seenS < sinceS) names.push_back(history.name);
    return names;
}

}  // namespace qorctl
