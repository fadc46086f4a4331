#include "LibraryTicks.h"

#include <windows.h>

#include <atomic>

#include "support/ImportTable.h"

namespace {

using Ticks = DWORD(WINAPI*)();

std::atomic<std::uint32_t> ahead{0};

DWORD WINAPI movedTicks() {
    return GetTickCount() + ahead;
}

void put(Ticks replacement) {
    for (const imports::Import& each : imports::of("QorControlFacade.dll"))
        if (each.function == "GetTickCount")
            imports::replace(each.address, reinterpret_cast<void*>(replacement));
}

}  // namespace

LibraryTicks::LibraryTicks(std::uint32_t msBeforeWrap) {
    ahead = 0;
    advanceToBeforeWrap(msBeforeWrap);
    put(movedTicks);
}

LibraryTicks::~LibraryTicks() {
    put(GetTickCount);
}

std::uint32_t LibraryTicks::now() {
    return movedTicks();
}

void LibraryTicks::advance(std::uint32_t ms) {
    ahead += ms;
}

void LibraryTicks::advanceToBeforeWrap(std::uint32_t ms) {
    advance(0u - ms - now());
}
