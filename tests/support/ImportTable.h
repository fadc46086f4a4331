#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <vector>

/// What a loaded module imports by name, and where it keeps the addresses. They can be replaced:
/// the module then calls something else, and everybody else calls what they always did.
namespace imports {

struct Import {
    std::string module;    ///< from where, as the table spells it
    std::string function;  ///< its name
    void** address;
};

namespace detail {

template <class T>
T* at(char* module, DWORD offset) {
    return reinterpret_cast<T*>(module + offset);
}

}  // namespace detail

inline std::vector<Import> of(const char* moduleName) {
    using detail::at;
    char* const module = reinterpret_cast<char*>(GetModuleHandleA(moduleName));
    if (module == nullptr) throw std::runtime_error(moduleName + std::string(" is not loaded"));
    const auto* head =
        at<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const auto& table = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<Import> found;
    for (auto* from = at<IMAGE_IMPORT_DESCRIPTOR>(module, table.VirtualAddress); from->Name != 0;
         ++from) {
        const auto* name = at<IMAGE_THUNK_DATA>(module, from->OriginalFirstThunk);
        auto* address = at<void*>(module, from->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++address) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const char* text = at<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData)->Name;
            found.push_back({at<char>(module, from->Name), text, address});
        }
    }
    return found;
}

/// Puts an address in the place of another; gives the one that was there.
inline void* replace(void** place, void* replacement) {
    DWORD before = 0;
    if (!VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before))
        throw std::runtime_error("the import table cannot be written");
    void* const old = InterlockedExchangePointer(place, replacement);
    VirtualProtect(place, sizeof *place, before, &before);
    return old;
}

}  // namespace imports
