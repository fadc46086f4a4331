#include "doctor/HostPlace.h"

#include <windows.h>

#include <cstdlib>

namespace qorctl::doctor {
namespace {

constexpr std::size_t driveChars = 30;
constexpr std::size_t partChars = 2560;
constexpr std::size_t absoluteChars = 5160;

}  // namespace

std::string HostPlace::folder() const {
    return program.substr(0, program.find_last_of("\\/") + 1);
}

std::string HostPlace::resolved(const std::string& path) const {
    char drive[driveChars] = "";
    char directory[partChars] = "";
    char name[partChars] = "";
    if (_splitpath_s(path.c_str(), drive, sizeof drive, directory, sizeof directory, name,
                     sizeof name, nullptr, 0) != 0)
        return {};
    if (drive[0] != '\0') return path;
    char absolute[absoluteChars] = "";
    const std::string joined = folder() + path;
    return _fullpath(absolute, joined.c_str(), sizeof absolute) != nullptr ? absolute : "";
}

}  // namespace qorctl::doctor
