#include "cinterface/ValueRing.h"

#include <algorithm>

namespace cinterface {

ValueRing::ValueRing(unsigned int slots, std::size_t nameCount) {
    content_.change([&](Content& content) {
        content.slots.resize(slots);
        content.names.resize(nameCount);
    });
}

void ValueRing::take(const channel::Sample& sample) {
    content_.change([&](Content& content) {
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

std::optional<unsigned int> ValueRing::read(QorSample* samples, unsigned int capacity,
                                            unsigned int timeoutMs) {
    unsigned int got = 0;
    bool closed = false;
    content_.await(timeoutMs, [&](Content& content) {
        closed = content.closed;
        if (closed || content.count == 0) return closed;
        got = static_cast<unsigned int>(std::min<std::size_t>(capacity, content.count));
        for (unsigned int i = 0; i < got; ++i) samples[i] = content.remove();
        return true;
    });
    if (closed) return std::nullopt;
    return got;
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

QorSample ValueRing::Content::remove() {
    const Slot& slot = slots[first];
    // All that were dropped are older than what is still here.
    const QorSample sample = {slot.name, slot.missed + names[slot.name].dropped, slot.value,
                              static_cast<double>(slot.arrivalMs)};
    first = (first + 1) % slots.size();
    --count;
    return sample;
}

}  // namespace cinterface
