#include "start/ProgramLog.h"

#include <windows.h>

#include <fstream>

#include "Spelling.h"

namespace qorctl::start {
namespace {

constexpr DWORD maxPathChars = 4096;

std::string folderOf(const std::string& path) {
    return path.substr(0, path.find_last_of("\\/") + 1);
}

std::string nameOf(const std::string& path) {
    const std::string file = path.substr(folderOf(path).size());
    return file.substr(0, file.rfind('.'));
}

bool isAbsolute(const std::string& path) {
    return path.find(':') == 1 || path[0] == '\\' || path[0] == '/';
}

std::string logIn(const doctor::SettingsFacts& settings) {
    for (const auto& section : settings.sections) {
        if (isSameName(section.name, doctor::settingsSection)) continue;
        std::string text(maxPathChars, '\0');
        text.resize(GetPrivateProfileStringA(section.name.c_str(), "Log", "", text.data(),
                                             maxPathChars, settings.path.c_str()));
        if (!text.empty()) return text;
    }
    return {};
}

std::string pathOf(const doctor::SettingsFacts& settings, const std::string& executable) {
    std::string written = logIn(settings);
    if (written.empty()) written = nameOf(executable) + ".log";
    return isAbsolute(written) ? written : folderOf(settings.path) + written;
}

std::streamoff sizeOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    return file ? static_cast<std::streamoff>(file.tellg()) : 0;
}

}  // namespace

ProgramLog::ProgramLog(const doctor::SettingsFacts& settings, const std::string& executable)
    : path_(pathOf(settings, executable)), sizeBefore_(sizeOf(path_)) {}

std::vector<std::string> ProgramLog::lastLines(std::size_t count) const {
    std::ifstream file(path_, std::ios::binary);
    // One that was begun anew is new as a whole.
    if (sizeOf(path_) >= sizeBefore_) file.seekg(sizeBefore_);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        lines.push_back(line);
        if (lines.size() > count) lines.erase(lines.begin());
    }
    return lines;
}

}  // namespace qorctl::start
