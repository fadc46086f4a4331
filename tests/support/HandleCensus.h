#pragma once

#include <winsock2.h>

#include <windows.h>

// Needs windows.h before it.
#include <winternl.h>

#include <iterator>
#include <map>
#include <string>

/// This process's open handles, counted by type ("Event", "Thread", "File" ...).
using HandleCensus = std::map<std::string, int>;

namespace census {

template <class... Arguments>
using KernelCall = NTSTATUS(NTAPI*)(Arguments...);

/// One of the calls for which there is no import library with all that they can be asked.
template <class Call>
Call kernelCall(const char* name) {
    HMODULE const kernel = GetModuleHandleA("ntdll.dll");
    return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(kernel, name)));
}

/// Empty if it is none, or has been closed meanwhile.
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

/// Every value that a handle can have is tried, up to a long gap: they are given out from below.
/// The system's own list would be quicker to read, but Wine's server crashes when it is asked for
/// it while another process starts, and takes all programs with it.
inline HandleCensus countHandles() {
    constexpr ULONG_PTR step = 4, gap = 1024 * step;
    HandleCensus counts;
    ULONG_PTR end = gap;
    for (ULONG_PTR value = step; value < end; value += step) {
        const std::string type = census::typeOf(reinterpret_cast<HANDLE>(value));
        if (type.empty()) continue;
        ++counts[type];
        end = value + gap;
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
