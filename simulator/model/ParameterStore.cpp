#include "model/ParameterStore.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "model/Followers.h"
#include "model/Stamp.h"

namespace simulator {

namespace {

/// A measurement that is followed is taken for a straight line for so long.
constexpr std::uint64_t maxStepMs = 10;

Refusal refusalOfSize(const char* what, std::size_t given, std::size_t wanted) {
    if (given == wanted) return std::nullopt;
    return std::string(what) + " has " + std::to_string(given) + " elements, not " +
           std::to_string(wanted);
}

Refusal refusalOfValues(const ParameterModel& model, const std::vector<double>& values) {
    for (const double value : values) {
        // Written so that a NaN is refused too.
        if (!(value >= model.lowest && value <= model.highest)) {
            return "the value " + std::to_string(value) + " is outside the limits";
        }
    }
    return std::nullopt;
}

Refusal refusalOfAxis(const std::vector<double>& axis) {
    for (const double point : axis) {
        if (!std::isfinite(point)) return std::string("an axis point is not finite");
    }
    return std::nullopt;
}

Refusal refusalOfLength(const ParameterModel& model, const Arrays& present,
                        const std::vector<double>& values) {
    if (model.kind != ParameterKind::Text) {
        return refusalOfSize("the array of values", values.size(), present.first.size());
    }
    if (values.size() <= model.maxLength) return std::nullopt;
    return "the text is longer than " + std::to_string(model.maxLength) + " characters";
}

}  // namespace

ParameterStore::ParameterStore(const std::vector<ParameterModel>& parameters) {
    for (const ParameterModel& parameter : parameters) {
        entries_.push_back({&parameter, parameter.arrays, false, {}});
    }
    followers_ = followersOf(parameters);
    startLags();
}

void ParameterStore::startLags() {
    for (Entry& entry : entries_) entry.lags.resize(entry.model->live.size());
    for (const std::size_t place : followers_) {
        Entry& entry = entries_[place];
        for (std::size_t i = 0; i < entry.lags.size(); ++i) {
            const auto* follow = std::get_if<FollowTerm>(&entry.model->live[i]);
            if (follow == nullptr) continue;
            const auto source = static_cast<std::size_t>(indexOf(*find(follow->source)));
            const double start = target(*follow, source);
            entry.lags[i] = {source, start, start};
            followsLive_ = followsLive_ || isLive(source);
        }
    }
}

void ParameterStore::advanceTo(std::uint64_t timeMs) {
    while (timeMs_ < timeMs) {
        const std::uint64_t leftMs = timeMs - timeMs_;
        const std::uint64_t stepMs = followsLive_ ? std::min(leftMs, maxStepMs) : leftMs;
        timeMs_ += stepMs;
        for (const std::size_t place : followers_) {
            advanceLags(entries_[place], static_cast<double>(stepMs) / 1000.0);
        }
    }
}

const ParameterModel* ParameterStore::find(const std::string& name) const {
    for (const Entry& entry : entries_) {
        if (entry.model->name == name) return entry.model;
    }
    return nullptr;
}

const ParameterModel* ParameterStore::at(std::uint32_t index) const {
    return index < entries_.size() ? entries_[index].model : nullptr;
}

std::int32_t ParameterStore::indexOf(const ParameterModel& parameter) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.model == &parameter; });
    return static_cast<std::int32_t>(found - entries_.begin());
}

Arrays ParameterStore::read(std::uint32_t index) const {
    const Entry& entry = entries_[index];
    if (entry.model->kind == ParameterKind::Live) return {{liveValue(entry)}, {}, {}};
    const bool fromModel = page_ == Page::Reference && entry.model->kind != ParameterKind::Actuator;
    Arrays arrays = fromModel ? entry.model->arrays : entry.working;
    if (entry.model->stamp) {
        std::fill(arrays.first.begin(), arrays.first.end(), stampOf(*entry.model->stamp));
    }
    return arrays;
}

double ParameterStore::firstValue(std::uint32_t index) const {
    const Arrays arrays = read(index);
    return arrays.first.empty() ? 0.0 : arrays.first.front();
}

Refusal ParameterStore::writeValues(std::uint32_t index, const std::vector<double>& values) {
    Entry& entry = entries_[index];
    if (Refusal refusal = refusalToWrite(entry)) return refusal;
    if (Refusal refusal = refusalOfLength(*entry.model, entry.working, values)) return refusal;
    if (Refusal refusal = refusalOfValues(*entry.model, values)) return refusal;
    entry.working.first = values;
    return std::nullopt;
}

Refusal ParameterStore::writeArrays(std::uint32_t index, const Arrays& arrays) {
    Entry& entry = entries_[index];
    const Arrays& present = entry.working;
    if (Refusal r = refusalOfSize("the second array", arrays.second.size(), present.second.size()))
        return r;
    if (Refusal r = refusalOfSize("the third array", arrays.third.size(), present.third.size()))
        return r;
    if (Refusal r = refusalOfAxis(arrays.second)) return r;
    if (Refusal r = refusalOfAxis(arrays.third)) return r;
    if (Refusal r = writeValues(index, arrays.first)) return r;
    entry.working = arrays;
    return std::nullopt;
}

Refusal ParameterStore::writeText(std::uint32_t index, const std::string& text) {
    if (entries_[index].model->kind == ParameterKind::Text) {
        std::vector<double> characters;
        for (const char character : text) {
            characters.push_back(static_cast<unsigned char>(character));
        }
        return writeValues(index, characters);
    }
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size()) {
        return "\"" + text + "\" is not a number";
    }
    return writeValues(index, {value});
}

Refusal ParameterStore::startControl(std::uint32_t index) {
    if (entries_[index].model->kind != ParameterKind::Actuator) {
        return std::string("it is no actuator");
    }
    entries_[index].underControl = true;
    return std::nullopt;
}

Refusal ParameterStore::stopControl(std::uint32_t index) {
    Entry& entry = entries_[index];
    if (!entry.underControl) return std::string("it is not under direct control");
    entry.underControl = false;
    entry.working = entry.model->arrays;
    return std::nullopt;
}

void ParameterStore::releaseActuators() {
    for (std::uint32_t index = 0; index < entries_.size(); ++index) stopControl(index);
}

// Of a scalar the working page counts, whatever page is selected.
double ParameterStore::target(const FollowTerm& term, std::size_t source) const {
    const Entry& entry = entries_[source];
    const double value = isLive(source) ? liveValue(entry) : entry.working.first.front();
    return term.gain * value + term.offset;
}

bool ParameterStore::isLive(std::size_t place) const {
    return entries_[place].model->kind == ParameterKind::Live;
}

void ParameterStore::advanceLags(Entry& entry, double elapsedS) {
    for (std::size_t i = 0; i < entry.lags.size(); ++i) {
        const auto* follow = std::get_if<FollowTerm>(&entry.model->live[i]);
        if (follow == nullptr) continue;
        Lag& lag = entry.lags[i];
        const double now = target(*follow, lag.source);
        // What is written jumps, and did so at the beginning.
        const double before = isLive(lag.source) ? lag.target : now;
        lag.value = lagTowards(lag.value, before, now, elapsedS, follow->timeConstantS);
        lag.target = now;
    }
}

double ParameterStore::liveValue(const Entry& entry) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < entry.lags.size(); ++i) {
        const double lag = entry.lags[i].value;
        sum += std::visit(
            [&](const auto& term) {
                if constexpr (std::is_same_v<std::decay_t<decltype(term)>, FollowTerm>) {
                    return lag;
                } else {
                    return valueAt(term, timeS());
                }
            },
            entry.model->live[i]);
    }
    return std::clamp(sum, entry.model->lowest, entry.model->highest);
}

Refusal ParameterStore::refusalToWrite(const Entry& entry) const {
    if (entry.model->kind == ParameterKind::Live) return std::string("it is a measurement");
    if (entry.model->kind == ParameterKind::Actuator) {
        if (entry.underControl) return std::nullopt;
        return std::string("the actuator is not under direct control");
    }
    if (page_ == Page::Reference) return std::string("the reference page is read-only");
    return std::nullopt;
}

}  // namespace simulator
