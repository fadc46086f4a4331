#include "facade/channel/StreamRegistry.h"

#include <utility>

namespace channel {

void StreamRegistry::add(ParamQueue* queue, const std::vector<std::string>& names) {
    (*repeatReads_.lock())[queue] = RepeatRead{queue, nullptr, names, false, 0, {}};
}

void StreamRegistry::add(std::shared_ptr<ValueSink> sink, const std::vector<std::string>& names) {
    const void* const target = sink.get();
    (*repeatReads_.lock())[target] = RepeatRead{nullptr, std::move(sink), names, false, 0, {}};
}

std::optional<RepeatRead> StreamRegistry::remove(const void* target) {
    const auto registered = repeatReads_.lock();
    const auto found = registered->find(target);
    if (found == registered->end()) return std::nullopt;
    std::optional<RepeatRead> removed = std::move(found->second);
    registered->erase(found);
    return removed;
}

StreamRegistry::Registrations StreamRegistry::all() {
    return *repeatReads_.lock();
}

bool StreamRegistry::notePreparation(const void* target, bool prepared, std::uint32_t epoch,
                                     const std::vector<std::string>& asked) {
    const auto registered = repeatReads_.lock();
    const auto found = registered->find(target);
    if (found == registered->end()) return false;
    found->second.prepared = prepared;
    found->second.epoch = epoch;
    found->second.asked = asked;
    return true;
}

}  // namespace channel
