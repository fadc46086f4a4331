#include "LibraryTicks.h"

#include <windows.h>

#include <atomic>
#include <cstring>
#include <stdexcept>

namespace {

using Ticks = DWORD(WINAPI*)();

std::atomic<std::uint32_t> ahead{0};

DWORD WINAPI movedTicks() {
    return GetTickCount() + ahead;
}

template <class T>
const T* at(const char* module, DWORD offset) {
    return reinterpret_cast<const T*>(module + offset);
}

/// Where a loaded module keeps the address of a function that it imports by name.
Ticks* importOf(const char* moduleName, const char* function) {
    const char* module = reinterpret_cast<const char*>(GetModuleHandleA(moduleName));
    if (module == nullptr) throw std::runtime_error("the library is not loaded");
    const auto* head =
        at<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const auto& table = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* from = at<IMAGE_IMPORT_DESCRIPTOR>(module, table.VirtualAddress); from->Name != 0;
         ++from) {
        const auto* name = at<IMAGE_THUNK_DATA>(module, from->OriginalFirstThunk);
        const auto* address = at<Ticks>(module, from->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++address) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const char* text = at<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData)->Name;
            if (std::strcmp(text, function) == 0) return const_cast<Ticks*>(address);
        }
    }
    throw std::runtime_error("the library does not import this function");
}

void put(Ticks replacement) {
    Ticks* const place = importOf("QorControlFacade.dll", "GetTickCount");
    DWORD before = 0;
    if (!VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before))
        throw std::runtime_error("the import table cannot be written");
    InterlockedExchangePointer(reinterpret_cast<void**>(place),
                               reinterpret_cast<void*>(replacement));
    VirtualProtect(place, sizeof *place, before, &before);
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
