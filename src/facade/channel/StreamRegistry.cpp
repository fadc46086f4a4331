#include "facade/channel/StreamRegistry.h"

#include <utility>

namespace channel {

void StreamRegistry::add(ParamQueue* queue, const std::vector<std::string>& names) {
    (*repeatReads_.lock())[queue] = RepeatRead{names, false, 0};
}

std::optional<RepeatRead> StreamRegistry::remove(ParamQueue* queue) {
    const auto registered = repeatReads_.lock();
    const auto found = registered->find(queue);
    if (found == registered->end()) return std::nullopt;
    std::optional<RepeatRead> removed = std::move(found->second);
    registered->erase(found);
    return removed;
}

StreamRegistry::Registrations StreamRegistry::all() {
    return *repeatReads_.lock();
}

bool StreamRegistry::notePreparation(ParamQueue* queue, bool prepared, std::uint32_t epoch) {
    const auto registered = repeatReads_.lock();
    const auto found = registered->find(queue);
    if (found == registered->end()) return false;
    found->second.prepared = prepared;
    found->second.epoch = epoch;
    return true;
}

}  // namespace channel
