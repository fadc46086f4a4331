#include "common/Paths.h"

#include <windows.h>

#include <cstdlib>

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

    explicit PathParts(const std::string& path) {
        isSplit = _splitpath_s(path.c_str(), drive, sizeof drive, directory, sizeof directory, name,
                               sizeof name, nullptr, 0) == 0;
    }

    std::string folder() const { return std::string(drive) + directory; }

    bool isSplit = false;
};

}  // namespace

std::string executableDirectory() {
    char module[moduleNameChars] = "";
    GetModuleFileNameA(nullptr, module, sizeof module - 1);
    std::string directory = PathParts(module).folder();
    if (directory.empty() || directory.back() != '\\') directory += '\\';
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
