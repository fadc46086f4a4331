#include "start/ChildWatch.h"

#include <windows.h>

// Needs windows.h before it.
#include <tlhelp32.h>

#include <fmt/format.h>

#include <vector>

#include "Spelling.h"

namespace qorctl::start {
namespace {

constexpr DWORD pollMs = 10;

struct Process {
    unsigned long id;
    unsigned long parent;
    std::string name;
};

std::vector<Process> processes() {
    std::vector<Process> all;
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return all;
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more; more = Process32Next(snapshot, &entry))
        all.push_back({entry.th32ProcessID, entry.th32ParentProcessID, entry.szExeFile});
    CloseHandle(snapshot);
    return all;
}

bool isChild(const Process& one, const std::string& name) {
    return one.parent == GetCurrentProcessId() && isSameName(one.name, name);
}

std::optional<Process> childOf(unsigned long parent) {
    for (const Process& one : processes())
        if (one.parent == parent) return one;
    return std::nullopt;
}

std::string described(const std::string& name, unsigned long id) {
    return fmt::format("{} (process {})", name, id);
}

}  // namespace

void ChildWatch::CloseIt::operator()(void* handle) const {
    CloseHandle(handle);
}

ChildWatch::ChildWatch(const std::string& executable)
    : name_(executable.substr(executable.find_last_of("\\/") + 1)) {
    // The number of this process may have been another's, whose children still run.
    for (const Process& one : processes())
        if (isChild(one, name_)) before_.insert(one.id);
    thread_ = std::thread([this] { run(); });
}

ChildWatch::~ChildWatch() {
    ended_ = true;
    thread_.join();
}

void ChildWatch::run() {
    while (!ended_ && look()) Sleep(pollMs);
}

bool ChildWatch::look() {
    for (const Process& one : processes()) {
        if (!isChild(one, name_) || before_.count(one.id) != 0) continue;
        Handle process(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, one.id));
        const std::lock_guard<std::mutex> guard(mutex_);
        id_ = one.id;
        process_ = std::move(process);
        return false;
    }
    return true;
}

bool ChildWatch::isFound() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return id_ != 0;
}

bool ChildWatch::hasItselfEnded() const {
    return !process_ || WaitForSingleObject(process_.get(), 0) == WAIT_OBJECT_0;
}

std::optional<std::string> ChildWatch::stillRunning() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (id_ == 0) return std::nullopt;
    if (!hasItselfEnded()) return described(name_, id_);
    const auto child = childOf(id_);
    if (!child) return std::nullopt;
    return described(child->name, child->id);
}

std::optional<ChildWatch::End> ChildWatch::end() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (id_ == 0) return std::nullopt;
    if (!hasItselfEnded()) return std::nullopt;
    // A program may only be there to start another one.
    if (childOf(id_)) return std::nullopt;
    DWORD code = 0;
    if (!process_ || !GetExitCodeProcess(process_.get(), &code)) return End{};
    return End{code};
}

}  // namespace qorctl::start
