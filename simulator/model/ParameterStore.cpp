#include "model/ParameterStore.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace simulator {

namespace {

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
    for (Entry& entry : entries_) {
        for (const LiveTerm& term : entry.model->live) {
            const auto* follow = std::get_if<FollowTerm>(&term);
            entry.lags.push_back(follow != nullptr ? target(*follow) : 0.0);
        }
    }
}

void ParameterStore::advanceTo(std::uint64_t timeMs) {
    if (timeMs <= timeMs_) return;
    const double elapsedS = static_cast<double>(timeMs - timeMs_) / 1000.0;
    timeMs_ = timeMs;
    for (Entry& entry : entries_) advanceLags(entry, elapsedS);
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
    return fromModel ? entry.model->arrays : entry.working;
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

double ParameterStore::target(const FollowTerm& term) const {
    const ParameterModel* source = find(term.source);
    const auto index = static_cast<std::size_t>(indexOf(*source));
    return term.gain * entries_[index].working.first.front() + term.offset;
}

void ParameterStore::advanceLags(Entry& entry, double elapsedS) {
    for (std::size_t i = 0; i < entry.lags.size(); ++i) {
        if (const auto* follow = std::get_if<FollowTerm>(&entry.model->live[i])) {
            entry.lags[i] =
                lagTowards(entry.lags[i], target(*follow), elapsedS, follow->timeConstantS);
        }
    }
}

double ParameterStore::liveValue(const Entry& entry) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < entry.lags.size(); ++i) {
        const double lag = entry.lags[i];
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
