#pragma once

#include <winsock2.h>

#include <windows.h>

// Needs windows.h before it.
#include <winternl.h>

#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

/// This process's open handles, counted by type ("Event", "Thread", "File" ...).
using HandleCensus = std::map<std::string, int>;

namespace census {

/// One handle of the machine, as the system lists them.
struct Entry {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT trace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

template <class... Arguments>
using KernelCall = NTSTATUS(NTAPI*)(Arguments...);

/// One of the calls for which there is no import library with all that they can be asked.
template <class Call>
Call kernelCall(const char* name) {
    HMODULE const kernel = GetModuleHandleA("ntdll.dll");
    return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(kernel, name)));
}

/// The system's whole list, of all processes.
inline std::vector<Entry> everyHandle() {
    constexpr ULONG extendedHandles = 64;
    constexpr NTSTATUS tooShort = static_cast<NTSTATUS>(0xC0000004u);
    constexpr std::size_t headBytes = 2 * sizeof(ULONG_PTR);  // the number of entries, and nothing
    static const auto query =
        kernelCall<KernelCall<ULONG, void*, ULONG, ULONG*>>("NtQuerySystemInformation");
    std::vector<char> bytes(1 << 20);
    NTSTATUS status = tooShort;
    while (status == tooShort) {
        bytes.resize(bytes.size() * 2);
        status = query(extendedHandles, bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    }
    if (status != 0) throw std::runtime_error("the system does not list its handles");
    const ULONG_PTR count = *reinterpret_cast<const ULONG_PTR*>(bytes.data());
    const auto* const first = reinterpret_cast<const Entry*>(bytes.data() + headBytes);
    return {first, first + count};
}

/// Empty if the handle has been closed meanwhile.
inline std::string typeOf(HANDLE handle) {
    constexpr ULONG objectType = 2;
    static const auto query =
        kernelCall<KernelCall<HANDLE, ULONG, void*, ULONG, ULONG*>>("NtQueryObject");
    alignas(8) char bytes[1024] = "";
    if (query(handle, objectType, bytes, sizeof bytes, nullptr) != 0) return {};
    const auto& name = *reinterpret_cast<const UNICODE_STRING*>(bytes);
    std::string type;
    for (USHORT i = 0; i < name.Length / sizeof(WCHAR); ++i)
        type += static_cast<char>(name.Buffer[i]);
    return type;
}

}  // namespace census

inline HandleCensus countHandles() {
    HandleCensus counts;
    for (const census::Entry& entry : census::everyHandle()) {
        if (entry.process != GetCurrentProcessId()) continue;
        const std::string type = census::typeOf(reinterpret_cast<HANDLE>(entry.handle));
        if (!type.empty()) ++counts[type];
    }
    return counts;
}

/// What there is more of in `after`, or less; types that did not change are left out.
inline HandleCensus difference(const HandleCensus& after, const HandleCensus& before) {
    HandleCensus changes = after;
    for (const auto& [type, count] : before) changes[type] -= count;
    for (auto change = changes.begin(); change != changes.end();)
        change = change->second == 0 ? changes.erase(change) : std::next(change);
    return changes;
}
