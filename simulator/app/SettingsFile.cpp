#include "app/SettingsFile.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "config/JsonNode.h"

namespace simulator {

namespace {

constexpr std::size_t maxValueBytes = 32768;

/// Calls a system function that fills a buffer and returns the length, or more than fits.
template <class Fill>
std::string filled(Fill fill) {
    std::vector<char> buffer(maxValueBytes);
    const DWORD length = fill(buffer.data(), static_cast<DWORD>(buffer.size()));
    return std::string(buffer.data(), length < buffer.size() ? length : 0);
}

SettingsReader readerOf(const std::string& settingsPath) {
    return [settingsPath](const std::string& section, const std::string& key) {
        return filled([&](char* buffer, DWORD size) {
            return GetPrivateProfileStringA(section.c_str(), key.c_str(), "", buffer, size,
                                            settingsPath.c_str());
        });
    };
}

Names keysOf(const std::string& section, const std::string& settingsPath) {
    const std::string list = filled([&](char* buffer, DWORD size) {
        return GetPrivateProfileStringA(section.c_str(), nullptr, "", buffer, size,
                                        settingsPath.c_str());
    });
    Names keys;
    for (std::size_t begin = 0; begin < list.size();) {
        const std::size_t end = std::min(list.find('\0', begin), list.size());
        if (end > begin) keys.push_back(list.substr(begin, end - begin));
        begin = end + 1;
    }
    return keys;
}

Places placesFor(const std::string& settingsPath) {
    Places places;
    places.settingsFolder = folderOf(settingsPath);
    places.programFolder = folderOf(
        filled([](char* buffer, DWORD size) { return GetModuleFileNameA(nullptr, buffer, size); }));
    // The process id keeps simulators that run at the same time apart.
    places.exportPrefix =
        filled([](char* buffer, DWORD size) { return GetTempPathA(size, buffer); }) +
        "qor-export-" + std::to_string(GetCurrentProcessId()) + "-";
    return places;
}

}  // namespace

std::string folderOf(const std::string& path) {
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string::npos ? std::string() : path.substr(0, separator + 1);
}

std::string absolutePath(const std::string& path) {
    return filled([&](char* buffer, DWORD size) {
        return GetFullPathNameA(path.c_str(), size, buffer, nullptr);
    });
}

std::string logPathIn(const std::string& settingsPath) {
    return logPathFrom(readerOf(settingsPath), placesFor(settingsPath));
}

Settings readSettingsFile(const std::string& settingsPath) {
    const DWORD attributes = GetFileAttributesA(settingsPath.c_str());
    const bool isFile =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    if (!isFile) throw ConfigError(settingsPath + ": there is no such settings file");
    try {
        refuseUnknownKeys(keysOf(ownSection, settingsPath));
        return settingsFrom(readerOf(settingsPath), placesFor(settingsPath));
    } catch (const ConfigError& error) {
        throw ConfigError(settingsPath + ": " + error.what());
    }
}

}  // namespace simulator
