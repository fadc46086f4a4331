#include "common/Paths.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace common {
namespace {

constexpr std::size_t moduleNameChars = 2600;
constexpr std::size_t driveChars = 30;
constexpr std::size_t partChars = 2560;

/// The parts of a path as the run-time library splits it.
struct PathParts {
    char drive[driveChars] = "";
    char directory[partChars] = "";
    char name[partChars] = "";

    explicit PathParts(const std::string& path) noexcept : PathParts(path.c_str()) {}
    explicit PathParts(const char* path) noexcept {
        isSplit = _splitpath_s(path, drive, sizeof drive, directory, sizeof directory, name,
                               sizeof name, nullptr, 0) == 0;
    }

    std::string folder() const { return std::string(drive) + directory; }

    bool isSplit = false;
};

}  // namespace

bool getExecutableDirectory(char* directory, std::size_t directoryBytes) noexcept {
    char module[moduleNameChars] = "";
    GetModuleFileNameA(nullptr, module, sizeof module - 1);
    const PathParts parts(module);
    const std::size_t length = std::strlen(parts.directory);
    const bool needsBackslash = length == 0 || parts.directory[length - 1] != '\\';
    const int written = std::snprintf(directory, directoryBytes, "%s%s%s", parts.drive,
                                      parts.directory, needsBackslash ? "\\" : "");
    return written >= 0 && static_cast<std::size_t>(written) < directoryBytes;
}

std::string executableDirectory() {
    char directory[driveChars + partChars + 1] = "";
    getExecutableDirectory(directory, sizeof directory);
    return directory;
}

std::string resolveAgainstExecutable(const std::string& path) {
    const PathParts parts(path);
    if (!parts.isSplit) return {};
    if (parts.drive[0] != '\0') return path;
    const std::string joined = executableDirectory() + path;
    char absolute[moduleNameChars + partChars];
    return _fullpath(absolute, joined.c_str(), sizeof absolute) != nullptr ? absolute : "";
}

std::string directoryOf(const std::string& path) {
    const PathParts parts(path);
    return parts.isSplit ? parts.folder() : std::string();
}

std::string withoutExtension(const std::string& path) {
    const PathParts parts(path);
    return parts.isSplit ? parts.folder() + parts.name : std::string();
}

}  // namespace common
