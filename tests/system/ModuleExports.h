#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// The names that a loaded module exports; none if it is not loaded.
inline std::vector<std::string> namesExportedBy(const char* moduleName) {
    const auto* module = reinterpret_cast<const char*>(GetModuleHandleA(moduleName));
    std::vector<std::string> names;
    if (module == nullptr) return names;
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    const auto* head = reinterpret_cast<const IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
    const auto& entry = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto* table =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(module + entry.VirtualAddress);
    const auto* offsets = reinterpret_cast<const DWORD*>(module + table->AddressOfNames);
    for (DWORD i = 0; i < table->NumberOfNames; ++i) names.emplace_back(module + offsets[i]);
    return names;
}
