#pragma once

#include <windows.h>

// Needs windows.h before it.
#include <psapi.h>
#include <tlhelp32.h>

#include <cstddef>
#include <cstdint>

/// What this process holds of the system, to find leaks by comparing before and after.
namespace tcp {

/// Handles are given out from the lowest free value up, so this grows with every leaked handle.
/// (The system's own count is not available everywhere.)
inline std::uintptr_t nextFreeHandle() {
    HANDLE const probe = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(probe);
    return reinterpret_cast<std::uintptr_t>(probe);
}

inline unsigned threadCount() {
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    unsigned count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    CloseHandle(snapshot);
    return count;
}

inline std::size_t memoryBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof counters;
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

/// What the process has for itself, also where nothing was written to it yet.
inline std::size_t committedBytes() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* place = nullptr; VirtualQuery(place, &region, sizeof region) != 0;
         place = static_cast<const char*>(region.BaseAddress) + region.RegionSize)
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    return bytes;
}

/// What is in use of a heap.
inline std::size_t bytesInUse(HANDLE heap) {
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(heap);
    while (HeapWalk(heap, &entry))
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
    HeapUnlock(heap);
    return bytes;
}

/// What is in use of all heaps of the process; exact where `memoryBytes` goes by pages.
inline std::size_t heapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    std::size_t bytes = 0;
    for (DWORD heap = 0; heap < count && heap < 64; ++heap) bytes += bytesInUse(heaps[heap]);
    return bytes;
}

}  // namespace tcp
