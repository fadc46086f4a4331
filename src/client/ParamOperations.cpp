#include <utility>

#include "client/ClientCommands.h"
#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"

using protocol::DirectCtrl;
using protocol::ParamInfo;
using protocol::StaticParam;

namespace {

constexpr unsigned int writeMs = 500;

}  // namespace

bool ClientExternalOperating::getParamInfo(const std::string& name, ParamInfo& description,
                                           unsigned int timeoutMs, bool refresh) {
    if (refresh) state_.lock()->descriptions.erase(name);
    ParamInfo found;
    const auto isThere = [&] {
        return clientsend::copyEntry(state_.lock()->descriptions, name, found);
    };
    if (!isThere()) {
        ParamInfo request;
        request.name = name;
        if (!send<ClientCommandGetParamInfo>(request, timeoutMs)) return false;
        if (!waitUntil(timeoutMs, isThere)) {
            // Under the empty name, so that the requested one is asked for again next time.
            state_.lock()->descriptions[std::string()] = ParamInfo();
            return false;
        }
    }
    if (found.paramIndex == ParamInfo::unknownIndex) return false;
    description = found;
    return true;
}

bool ClientExternalOperating::resolve(const std::string& name, unsigned int timeoutMs,
                                      std::int32_t& index) {
    ParamInfo description;
    if (!getParamInfo(name, description, timeoutMs, false)) return false;
    index = description.paramIndex;
    return true;
}

bool ClientExternalOperating::getParamData(const std::string& name, std::vector<double>& values,
                                           unsigned int timeoutMs, bool refresh) {
    std::int32_t index = 0;
    if (!resolve(name, timeoutMs, index)) return false;
    if (refresh) state_.lock()->values.erase(index);
    const auto isThere = [&] {
        return clientsend::copyEntry(state_.lock()->values, index, values);
    };
    if (isThere()) return true;
    DirectCtrl request;
    request.paramIndex = static_cast<std::uint32_t>(index);
    request.operation = DirectCtrl::readValues;
    request.name = name;
    return send<ClientCommandDirectCtrl>(request, timeoutMs) && waitUntil(timeoutMs, isThere);
}

bool ClientExternalOperating::setParamData(const std::string& name, std::vector<double> values) {
    return directCtrl(name, DirectCtrl::writeValues, std::move(values), std::string());
}

bool ClientExternalOperating::setDynamicData(const std::string& name, std::vector<double> values,
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
                                         std::vector<double> values, std::string text) {
    std::int32_t index = 0;
    if (!resolve(name, clientsend::resolveMs, index)) return false;
    DirectCtrl request;
    request.paramIndex = static_cast<std::uint32_t>(index);
    request.operation = operation;
    request.values = std::move(values);
    request.name = std::move(text);
    return send<ClientCommandDirectCtrl>(std::move(request), writeMs);
}

bool ClientExternalOperating::getStaticParam(const std::string& name, SampledValue& sample,
                                             unsigned int timeoutMs) {
    std::int32_t index = 0;
    if (!resolve(name, timeoutMs, index)) return false;
    state_.lock()->samples.erase(index);
    StaticParam request;
    request.paramIndex = static_cast<std::uint32_t>(index);
    request.operation = StaticParam::readArrays;
    const auto isThere = [&] {
        return clientsend::copyEntry(state_.lock()->samples, index, sample);
    };
    return send<ClientCommandStaticParam>(request, timeoutMs) && waitUntil(timeoutMs, isThere);
}

bool ClientExternalOperating::setStaticParam(const std::string& name, SampledValue sample) {
    std::int32_t index = 0;
    if (!resolve(name, clientsend::resolveMs, index)) return false;
    StaticParam request;
    request.paramIndex = static_cast<std::uint32_t>(index);
    request.operation = StaticParam::writeArrays;
    request.first = std::move(sample.values);
    request.second = std::move(sample.second);
    request.third = std::move(sample.third);
    return send<ClientCommandStaticParam>(std::move(request), writeMs);
}
