#include "facade/ValueRing.h"

namespace sinkstreams {

ValueRing::ValueRing(unsigned int slots, std::size_t nameCount) {
    content_.change([&](Content& content) {
        content.slots.resize(slots);
        content.names.resize(nameCount);
    });
}

void ValueRing::take(const channel::Sample& sample) {
    content_.change([&](Content& content) {
        if (content.closed) return;
        if (content.count == content.slots.size()) content.drop();
        content.add(sample);
    });
}

void ValueRing::notePreparation(const common::Verdict& verdict) {
    content_.change([&](Content& content) { content.preparation = verdict; });
}

common::Verdict ValueRing::preparation() {
    common::Verdict verdict;
    content_.change([&](Content& content) { verdict = content.preparation; });
    return verdict;
}

void ValueRing::close() {
    content_.change([](Content& content) { content.closed = true; });
}

void ValueRing::Content::drop() {
    ++names[slots[first].name].dropped;
    first = (first + 1) % slots.size();
    --count;
}

void ValueRing::Content::add(const channel::Sample& sample) {
    Name& name = names[sample.name];
    name.missed += static_cast<std::uint32_t>(sample.missed);
    Slot& slot = slots[(first + count) % slots.size()];
    slot.value = sample.value;
    slot.arrivalMs = sample.arrival.ms();
    slot.name = static_cast<std::uint32_t>(sample.name);
    slot.missed = name.missed;
    ++count;
}

qorcontrol::Arrival ValueRing::Content::remove() {
    const Slot& slot = slots[first];
    // All that were dropped are older than what is still here.
    const qorcontrol::Arrival arrival = {slot.name, slot.missed + names[slot.name].dropped,
                                         slot.value, slot.arrivalMs};
    first = (first + 1) % slots.size();
    --count;
    return arrival;
}

}  // namespace sinkstreams
