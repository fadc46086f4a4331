#include <algorithm>

#include "client/ClientCommands.h"
#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"

namespace {

constexpr unsigned int listMs = 500;

}  // namespace

bool ClientExternalOperating::resolveAll(const std::vector<std::string>& names,
                                         unsigned int timeoutMs,
                                         std::vector<std::int32_t>& indices) {
    for (const std::string& name : names) {
        std::int32_t index = 0;
        if (!resolve(name, timeoutMs, index)) return false;
        indices.push_back(index);
    }
    return true;
}

bool ClientExternalOperating::readTogether(const std::vector<std::string>& names,
                                           std::vector<std::vector<double>>& values,
                                           unsigned int timeoutMs) {
    if (names.empty()) {
        values.clear();
        return true;
    }
    std::vector<std::int32_t> indices;
    if (!resolveAll(names, timeoutMs, indices)) return false;
    protocol::ReadTogether request;
    request.paramIndices.assign(indices.begin(), indices.end());
    request.names = names;
    {
        const auto state = state_.lock();
        for (const std::int32_t index : indices) state->values.erase(index);
    }
    std::vector<std::vector<double>> found(indices.size());
    const auto areThere = [&] {
        const auto state = state_.lock();
        for (const std::int32_t index : indices)
            if (state->values.find(index) == state->values.end()) return false;
        for (std::size_t i = 0; i < indices.size(); ++i) found[i] = state->values[indices[i]];
        return true;
    };
    if (!send<ClientCommandReadTogether>(std::move(request), timeoutMs)) return false;
    if (!waitUntil(timeoutMs, areThere)) return false;
    values = std::move(found);
    return true;
}

bool ClientExternalOperating::subscribe(const std::vector<std::string>& names) {
    std::vector<std::int32_t> indices;
    if (!resolveAll(names, clientsend::resolveMs, indices)) return false;
    count(indices, 1);
    if (sendSubscriptions()) return true;
    count(indices, -1);  // whoever asks again must not count twice
    return false;
}

bool ClientExternalOperating::unsubscribe(const std::vector<std::string>& names) {
    std::vector<std::int32_t> indices;
    if (!resolveAll(names, clientsend::resolveMs, indices)) return false;
    count(indices, -1);
    return sendSubscriptions();
}

void ClientExternalOperating::count(const std::vector<std::int32_t>& indices,
                                    std::int32_t difference) {
    const auto state = state_.lock();
    for (const std::int32_t index : indices) {
        std::int32_t& references = state->subscriptions[index];
        references = std::max(references + difference, 0);
    }
}

bool ClientExternalOperating::sendSubscriptions() {
    protocol::SetParamList list;
    {
        const auto state = state_.lock();
        for (const auto& entry : state->subscriptions)
            if (entry.second >= 1)
                list.paramIndices.items.push_back(static_cast<std::uint32_t>(entry.first));
    }
    return send<CommandSetParamList>(std::move(list), listMs);
}

bool ClientExternalOperating::peekParamData(const std::string& name, SampledValue& sample) {
    std::int32_t index = 0;
    if (!resolve(name, clientsend::resolveMs, index)) return false;
    SampledValue found;
    if (!clientsend::copyEntry(state_.lock()->samples, index, found)) return false;
    if (found.values.empty()) return false;
    sample = std::move(found);
    return true;
}
