#include "HostPaths.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

namespace qorctl::paths {
namespace {

constexpr std::size_t maxModuleChars = 32768;

bool exists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string fullPath(const std::string& path) {
    const DWORD size = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr);
    std::string full(size, '\0');
    full.resize(GetFullPathNameA(path.c_str(), size, full.data(), nullptr));
    return full;
}

bool startsAtRoot(const std::string& path) {
    return path[0] == '/' || path[0] == '\\';
}

}  // namespace

std::string absolute(const std::string& path) {
    if (path.empty()) throw std::invalid_argument("an empty path");
    std::string full = fullPath(path);
    if (full.size() < 2 || full[1] != ':')
        throw std::invalid_argument(path + " has no drive letter: map the network path to one");
    if (!startsAtRoot(path) || exists(full)) return full;
    const std::string onZ = fullPath("Z:" + path);
    return exists(onZ) ? onZ : full;
}

std::string whyNotAbsolute(const std::string& path) {
    try {
        absolute(path);
        return {};
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

std::string absoluteFile(const std::string& path) {
    const std::size_t slash = path.find_last_of("\\/");
    if (slash == std::string::npos) return absolute(path);
    return absolute(path.substr(0, slash + 1)) + path.substr(slash + 1);
}

std::string ofThisProgram() {
    std::string path(maxModuleChars, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::string traceFileOf(const std::string& hostPath) {
    const std::size_t dot = hostPath.rfind('.');
    const std::size_t slash = hostPath.find_last_of("\\/");
    const bool hasExtension =
        dot != std::string::npos && (slash == std::string::npos || dot > slash);
    return hostPath.substr(0, hasExtension ? dot : std::string::npos) + ".log";
}

}  // namespace qorctl::paths
