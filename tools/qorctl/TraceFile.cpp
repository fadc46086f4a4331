#include "TraceFile.h"

#include <windows.h>

#include <fmt/format.h>

#include <cstdio>
#include <fstream>

#include "HostPaths.h"

namespace qorctl {
namespace {

constexpr std::size_t extensionChars = 4;

/// Whether a program has it open. (The library lets others write it, but not remove it.)
bool isHeld(const std::string& path) {
    HANDLE const file =
        CreateFileA(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return false;
}

}  // namespace

TraceFile::TraceFile(const std::string& hostPath) : path_(paths::traceFileOf(hostPath)) {
    if (!isHeld(path_)) return;
    held_ = path_;
    const std::string base = held_.substr(0, held_.size() - extensionChars);
    const std::string own = fmt::format("{}-{}", base, GetCurrentProcessId());
    path_ = own + ".log";
    // The library looks for them beside the trace.
    if (CopyFileA((base + ".cfg").c_str(), (own + ".cfg").c_str(), FALSE)) settings_ = own + ".cfg";
}

TraceFile::~TraceFile() {
    if (!settings_.empty()) DeleteFileA(settings_.c_str());
}

void TraceFile::removeOld() const {
    std::remove(path_.c_str());
}

bool TraceFile::exists() const {
    return std::ifstream(path_).is_open();
}

}  // namespace qorctl
