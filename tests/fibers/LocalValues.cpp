// Values per thread. They are handed back at the end of the thread, or with the slot.
#include "LocalValues.h"

#include <windows.h>

#include <map>

namespace {

struct Slot {
    void (*release)(void*);
    std::map<unsigned int, void*> values;  // by thread
};

std::map<DWORD, Slot> slots;
DWORD lastSlot = 0;

}  // namespace

void fibers::releaseLocalValues(unsigned int thread) {
    for (auto& slot : slots) {
        const auto value = slot.second.values.extract(thread);
        if (!value.empty() && value.mapped() != nullptr) slot.second.release(value.mapped());
    }
}

DWORD FlsAlloc(void (*release)(void*)) noexcept {
    slots.emplace(++lastSlot, Slot{release, {}});
    return lastSlot;
}

BOOL FlsFree(DWORD index) noexcept {
    const auto slot = slots.extract(index);
    for (const auto& value : slot.mapped().values)
        if (value.second != nullptr) slot.mapped().release(value.second);
    return TRUE;
}

void* FlsGetValue(DWORD index) noexcept {
    const auto& values = slots.at(index).values;
    const auto found = values.find(GetCurrentThreadId());
    return found == values.end() ? nullptr : found->second;
}

BOOL FlsSetValue(DWORD index, void* value) noexcept {
    slots.at(index).values[GetCurrentThreadId()] = value;
    return TRUE;
}
