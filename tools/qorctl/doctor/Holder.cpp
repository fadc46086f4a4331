#include "doctor/Holder.h"

#include <windows.h>

// Needs windows.h before it.
#include <tlhelp32.h>

#include <fmt/format.h>

#include <memory>

#include "Spelling.h"

namespace qorctl::doctor {
namespace {

struct CloseIt {
    void operator()(void* handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseIt>;

std::string pathOf(unsigned long process) {
    const Handle handle(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    char path[4096] = "";
    DWORD length = sizeof path;
    if (!handle || !QueryFullProcessImageNameA(handle.get(), 0, path, &length)) return {};
    return std::string(path, length);
}

/// The name at least, of a process that this account may not look into.
std::string nameOf(unsigned long process) {
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return {};
    const Handle handle(snapshot);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry))
        if (entry.th32ProcessID == process) return entry.szExeFile;
    return {};
}

std::string fileNameOf(const std::string& path) {
    return path.substr(path.find_last_of("\\/") + 1);
}

}  // namespace

std::string Holder::description() const {
    if (process == 0) return "a process that the system does not name";
    return fmt::format("{} (process {})", isKnown() ? program : "an unknown program", process);
}

bool Holder::maybeIs(const std::string& path) const {
    if (!isKnown()) return true;
    const bool hasPath = program.find('\\') != std::string::npos;
    return isSameName(program, path) || (!hasPath && isSameName(program, fileNameOf(path)));
}

Holder Holder::of(unsigned long process) {
    if (process == 0) return {};
    const std::string path = pathOf(process);
    return {process, path.empty() ? nameOf(process) : path};
}

std::string namesOf(const Holders& holders) {
    std::string names;
    for (const Holder& holder : holders)
        names += (names.empty() ? "" : ", ") + holder.description();
    return names;
}

}  // namespace qorctl::doctor
