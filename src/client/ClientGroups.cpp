#include <set>

#include "client/ClientCommands.h"
#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"

namespace {

constexpr unsigned int listMs = 500;

}  // namespace

bool ClientExternalOperating::resolveAll(const std::vector<std::string>& names,
                                         unsigned int timeoutMs, Epoch& epoch,
                                         std::vector<std::int32_t>& indices) {
    epoch = this->epoch();
    for (const std::string& name : names) {
        Place place;
        if (!resolve(name, timeoutMs, place)) return false;
        if (place.epoch != epoch) return fail(qorcontrol::Cause::qorChanged);
        indices.push_back(place.index);
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
    Epoch epoch = 0;
    std::vector<std::int32_t> indices;
    if (!resolveAll(names, timeoutMs, epoch, indices)) return false;
    protocol::ReadTogether request;
    request.paramIndices.assign(indices.begin(), indices.end());
    request.names = names;
    const Awaiting awaiting(state_, indices);
    const auto forget = [&](ClientState& state) {
        for (const std::int32_t index : indices) state.params.dropValues(index);
    };
    std::vector<std::vector<double>> found(indices.size());
    const auto areThere = [&](const ClientState& state) {
        if (state.epoch != epoch) return false;
        for (const std::int32_t index : indices)
            if (state.params.values(index) == nullptr) return false;
        for (std::size_t i = 0; i < indices.size(); ++i)
            found[i] = state.params.values(indices[i])->all();
        return true;
    };
    // QOR answers once, however often a name stands there.
    const std::set<std::int32_t> distinct(indices.begin(), indices.end());
    if (!ask<ClientCommandReadTogether, std::int32_t>(
            std::move(request), timeoutMs, &ClientState::owedValues,
            std::vector<std::int32_t>(distinct.begin(), distinct.end()), forget, epoch))
        return false;
    if (!awaitData(timeoutMs, areThere)) return false;
    values = std::move(found);
    return true;
}

bool ClientExternalOperating::subscribe(Epoch epoch, const std::vector<std::string>& names,
                                        std::vector<ArrivalCursor>* cursors) {
    Epoch resolvedIn = 0;
    std::vector<std::int32_t> indices;
    if (!resolveAll(names, clientsend::resolveMs, resolvedIn, indices)) return false;
    if (resolvedIn != epoch || !count(epoch, indices, 1)) return false;
    if (cursors != nullptr) *cursors = keepArrivals(indices);
    if (sendSubscriptions(epoch)) return true;
    count(epoch, indices, -1);  // whoever asks again must not count twice
    return false;
}

std::vector<ArrivalCursor> ClientExternalOperating::keepArrivals(
    const std::vector<std::int32_t>& indices) {
    const auto state = state_.lock();
    std::vector<ArrivalCursor> cursors;
    cursors.reserve(indices.size());
    for (const std::int32_t index : indices) cursors.push_back(state->params.keepArrivals(index));
    return cursors;
}

std::vector<std::vector<ArrivedValue>> ClientExternalOperating::collectArrivals(
    Epoch epoch, const std::vector<ArrivalCursor>& cursors) {
    std::vector<std::vector<ArrivedValue>> values(cursors.size());
    const auto state = state_.lock();
    const Epoch age = state->epoch - epoch;
    if (age > 1) return values;
    for (std::size_t i = 0; i < cursors.size(); ++i) {
        const Arrivals* const kept = state->params.arrivals(cursors[i].index, age == 1);
        if (kept != nullptr) kept->collect(cursors[i].taken, values[i]);
    }
    return values;
}

bool ClientExternalOperating::unsubscribe(Epoch epoch, const std::vector<std::string>& names) {
    // Of an epoch that is over nothing is counted any more. But QOR may be the one it always was,
    // and go on with its old list.
    const Epoch present = this->epoch();
    if (present != epoch) return sendSubscriptions(present);
    Epoch resolvedIn = 0;
    std::vector<std::int32_t> indices;
    if (!resolveAll(names, clientsend::resolveMs, resolvedIn, indices)) return false;
    return resolvedIn == epoch && count(epoch, indices, -1) && sendSubscriptions(epoch);
}

bool ClientExternalOperating::count(Epoch epoch, const std::vector<std::int32_t>& indices,
                                    std::int32_t difference) {
    const auto state = state_.lock();
    if (state->epoch != epoch) return false;
    state->params.count(indices, difference);
    return true;
}

bool ClientExternalOperating::sendSubscriptions(Epoch epoch) {
    protocol::SetParamList list;
    for (const std::int32_t index : state_.lock()->params.streamed())
        list.paramIndices.items.push_back(static_cast<std::uint32_t>(index));
    return send<CommandSetParamList>(std::move(list), listMs, epoch);
}

bool ClientExternalOperating::peekParamData(const std::string& name, SampledValue& sample) {
    Place place;
    if (!resolve(name, clientsend::resolveMs, place)) return false;
    SampledValue found;
    const bool isThere = copyOut(
        *state_.lock(), place.epoch,
        [&](const ParamTables& params) { return params.sample(place.index); }, found);
    if (!isThere || found.values.empty()) return false;
    sample = std::move(found);
    return true;
}
