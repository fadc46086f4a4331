// What of common/ is about Windows alone: native paths and errors.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "common/LastError.h"
#include "common/Paths.h"

namespace common {

namespace fs = std::filesystem;

std::string lastErrorText() {
    return std::strerror(errno);
}

std::string executableDirectory() {
    return directoryOf(fs::read_symlink("/proc/self/exe").string());
}

bool getExecutableDirectory(char* directory, std::size_t directoryBytes) noexcept {
    const std::string own = executableDirectory();
    return static_cast<std::size_t>(std::snprintf(directory, directoryBytes, "%s", own.c_str())) <
           directoryBytes;
}

std::string resolveAgainstExecutable(const std::string& path) {
    return (fs::path(executableDirectory()) / path).lexically_normal().string();
}

std::string directoryOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

std::string withoutExtension(const std::string& path) {
    return fs::path(path).replace_extension().string();
}

}  // namespace common
