#include <cmath>
#include <limits>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "common/Clock.h"

namespace {

/// The reserved ids under which QOR reports the state of a connect.
constexpr std::int32_t idEcuOnline = -10;
constexpr std::int32_t idProgress = -11;
constexpr std::int32_t idResult = -12;

/// Truncated toward zero; 0 for what no integer can hold.
std::int32_t asInteger(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double whole = std::trunc(value);
    if (!(whole >= Limits::min() && whole <= Limits::max())) return 0;
    return static_cast<std::int32_t>(whole);
}

/// Far more entries than any real model or connect brings; what a peer gone mad adds beyond it is
/// dropped.
constexpr std::size_t maxEntries = 100000;

/// Replaces or adds an entry.
template <class Map>
void store(Map& map, const typename Map::key_type& key, typename Map::mapped_type value) {
    if (map.size() >= maxEntries && map.find(key) == map.end()) return;
    map[key] = std::move(value);
}

}  // namespace

void ClientExternalOperating::onParamValue(std::int32_t id, double value) {
    const auto state = state_.lock();
    switch (id) {
        case idEcuOnline:
            if (value == 0.0) state->ecuOnline = false;
            if (value == 1.0) state->ecuOnline = true;
            return;
        case idProgress:
            state->bootstrapProgress = asInteger(value);
            return;
        case idResult:
            state->bootstrapProgress = -1;
            if (state->bootstrapResults.size() < maxEntries)
                state->bootstrapResults.push_back(asInteger(value));
            return;
        default:
            store(state->samples, id, SampledValue{{value}, {}, {}, common::tickCount()});
    }
}

void ClientExternalOperating::onParamInfo(const protocol::ParamInfo& record) {
    store(state_.lock()->descriptions, record.name, record);
}

void ClientExternalOperating::onDirectCtrl(protocol::DirectCtrl record) {
    store(state_.lock()->values, static_cast<std::int32_t>(record.paramIndex),
          std::move(record.values));
}

void ClientExternalOperating::onStaticParam(protocol::StaticParam record) {
    const auto state = state_.lock();
    store(state->samples, static_cast<std::int32_t>(record.paramIndex),
          SampledValue{std::move(record.first), std::move(record.second), std::move(record.third),
                       common::tickCount()});
}

void ClientExternalOperating::onDtcs(protocol::GetDtc record) {
    const auto state = state_.lock();
    state->dtcs.content = std::move(record.dtcs);
    state->dtcs.arrived = true;
}

void ClientExternalOperating::onCanBusData(protocol::CanBusData record) {
    const auto state = state_.lock();
    state->canFrames.content = std::move(record.items);
    state->canFrames.arrived = true;
}

void ClientExternalOperating::onKwpAnswer(protocol::ExecKwp record) {
    const auto state = state_.lock();
    state->kwpAnswer.content = std::move(record);
    state->kwpAnswer.arrived = true;
}

void ClientExternalOperating::onModelDescription(const protocol::GetHex& record) {
    state_.lock()->model = record;
}
