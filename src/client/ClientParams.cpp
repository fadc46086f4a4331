#include <utility>

#include "client/ClientCommands.h"
#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"

using protocol::DirectCtrl;
using protocol::ParamInfo;
using protocol::StaticParam;
using qorcontrol::Cause;

namespace {

constexpr unsigned int writeMs = 500;

}  // namespace

bool ClientExternalOperating::getParamInfo(const std::string& name, ParamInfo& description,
                                           unsigned int timeoutMs, bool refresh) {
    if (refresh) state_.lock()->params.dropDescription(name);
    Epoch epoch = 0;
    return describe(name, description, epoch, timeoutMs);
}

bool ClientExternalOperating::describe(const std::string& name, ParamInfo& description,
                                       Epoch& epoch, unsigned int timeoutMs) {
    ParamInfo found;
    const auto isThere = [&](const ClientState& state) {
        const ParamInfo* const known = state.params.description(name);
        if (known == nullptr) return false;
        found = *known;
        epoch = state.epoch;
        return true;
    };
    if (!isThere(*state_.lock())) {
        const Awaiting awaiting(state_, name);
        ParamInfo request;
        request.name = name;
        const auto forget = [&](ClientState& state) { state.params.dropDescription(name); };
        if (!ask<ClientCommandGetParamInfo, std::string>(
                request, timeoutMs, &ClientState::owedDescriptions, {name}, forget))
            return false;
        if (!awaitData(timeoutMs, isThere)) {
            // Under the empty name, so that the requested one is asked for again next time.
            state_.lock()->params.storeDescription(std::string(), ParamInfo());
            return false;
        }
    }
    if (found.paramIndex == ParamInfo::unknownIndex) return fail(Cause::unknownName);
    description = found;
    return true;
}

bool ClientExternalOperating::lookUp(const std::string& name, ParamInfo& description,
                                     unsigned int timeoutMs) {
    Epoch epoch = 0;
    return lookUp(name, description, epoch, timeoutMs);
}

bool ClientExternalOperating::lookUp(const std::string& name, ParamInfo& description, Epoch& epoch,
                                     unsigned int timeoutMs) {
    const bool wasMarked = verdict_.mayBelongToEarlier;
    if (!describe(name, description, epoch, timeoutMs)) return false;
    verdict_.mayBelongToEarlier = wasMarked;
    return true;
}

bool ClientExternalOperating::resolve(const std::string& name, unsigned int timeoutMs,
                                      Place& place) {
    ParamInfo description;
    if (!lookUp(name, description, place.epoch, timeoutMs)) return false;
    // What the request has learnt before may not hold any more.
    if (requestEpoch_ && *requestEpoch_ != place.epoch) return fail(Cause::qorChanged);
    place.index = description.paramIndex;
    return true;
}

bool ClientExternalOperating::getParamData(const std::string& name, common::Doubles& values,
                                           unsigned int timeoutMs, bool refresh) {
    Place place;
    if (!resolve(name, timeoutMs, place)) return false;
    const Awaiting awaiting(state_, std::vector<std::int32_t>{place.index});
    if (refresh) state_.lock()->params.dropValues(place.index);
    const auto isThere = [&](const ClientState& state) {
        return copyOut(
            state, place.epoch,
            [&](const ParamTables& params) { return params.values(place.index); }, values);
    };
    if (isThere(*state_.lock())) return true;
    DirectCtrl request;
    request.paramIndex = static_cast<std::uint32_t>(place.index);
    request.operation = DirectCtrl::readValues;
    request.name = name;
    const auto forget = [&](ClientState& state) { state.params.dropValues(place.index); };
    return ask<ClientCommandDirectCtrl, std::int32_t>(request, timeoutMs, &ClientState::owedValues,
                                                      {place.index}, forget, place.epoch) &&
           awaitData(timeoutMs, isThere);
}

bool ClientExternalOperating::setParamData(const std::string& name, common::Doubles values) {
    return directCtrl(name, DirectCtrl::writeValues, std::move(values), std::string());
}

bool ClientExternalOperating::setDynamicData(const std::string& name, common::Doubles values,
                                             std::string text) {
    return directCtrl(name, DirectCtrl::writeDynamic, std::move(values), std::move(text));
}

bool ClientExternalOperating::startDirectCtrl(const std::string& name) {
    return directCtrl(name, DirectCtrl::startControl, {}, name);
}

bool ClientExternalOperating::stopDirectCtrl(const std::string& name) {
    return directCtrl(name, DirectCtrl::stopControl, {}, name);
}

bool ClientExternalOperating::directCtrl(const std::string& name, std::uint32_t operation,
                                         common::Doubles values, std::string text) {
    Place place;
    if (!resolve(name, clientsend::resolveMs, place)) return false;
    DirectCtrl request;
    request.paramIndex = static_cast<std::uint32_t>(place.index);
    request.operation = operation;
    request.values = std::move(values);
    request.name = std::move(text);
    return send<ClientCommandDirectCtrl>(std::move(request), writeMs, place.epoch);
}

bool ClientExternalOperating::getStaticParam(const std::string& name, SampledValue& sample,
                                             unsigned int timeoutMs) {
    Place place;
    if (!resolve(name, timeoutMs, place)) return false;
    const Awaiting awaiting(state_, std::vector<std::int32_t>{place.index});
    StaticParam request;
    request.paramIndex = static_cast<std::uint32_t>(place.index);
    request.operation = StaticParam::readArrays;
    const auto isThere = [&](const ClientState& state) {
        return copyOut(
            state, place.epoch,
            [&](const ParamTables& params) { return params.sample(place.index); }, sample);
    };
    const auto forget = [&](ClientState& state) { state.params.dropSample(place.index); };
    return ask<ClientCommandStaticParam, std::int32_t>(
               request, timeoutMs, &ClientState::owedSamples, {place.index}, forget, place.epoch) &&
           awaitData(timeoutMs, isThere);
}

bool ClientExternalOperating::setStaticParam(const std::string& name, SampledValue sample) {
    Place place;
    if (!resolve(name, clientsend::resolveMs, place)) return false;
    StaticParam request;
    request.paramIndex = static_cast<std::uint32_t>(place.index);
    request.operation = StaticParam::writeArrays;
    request.first = std::move(sample.values);
    request.second = std::move(sample.second);
    request.third = std::move(sample.third);
    return send<ClientCommandStaticParam>(std::move(request), writeMs, place.epoch);
}
