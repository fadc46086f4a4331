#include "SettingsFile.h"

#include <windows.h>

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>

namespace qorctl {
namespace {

const char* const section = "CommonSettings";
constexpr DWORD maxValueChars = 5200;

}  // namespace

SettingsFile::SettingsFile(const std::string& path, const std::string& transport) : path_(path) {
    const bool wantsTcp = transport == "tcp";
    if (transport.empty() || wantsTcp == usesTcp()) return;
    if (GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) return;
    const std::string copy = fmt::format("{}.{}-{}.ini", path, transport, GetCurrentProcessId());
    if (!CopyFileA(path.c_str(), copy.c_str(), FALSE) ||
        !WritePrivateProfileStringA(section, "UseTcp", wantsTcp ? "true" : "false", copy.c_str()))
        throw std::runtime_error("cannot write a copy of the settings for --transport: " + copy);
    path_ = copy;
    isCopy_ = true;
}

SettingsFile::~SettingsFile() {
    if (isCopy_) DeleteFileA(path_.c_str());
}

std::string SettingsFile::transport() const {
    if (!std::ifstream(path_).is_open()) return "unknown, the settings cannot be read";
    if (usesTcp()) return "TCP to " + value("ServerIp") + ":" + value("TcpPort");
    return fmt::format("window messages, \"{}\" to \"{}\"", value("ClientPipeName"),
                       value("ServerPipeName"));
}

bool SettingsFile::usesTcp() const {
    return _stricmp(value("UseTcp").c_str(), "true") == 0;
}

std::string SettingsFile::value(const char* ofSection, const char* key) const {
    std::string text(maxValueChars, '\0');
    text.resize(
        GetPrivateProfileStringA(ofSection, key, "", text.data(), maxValueChars, path_.c_str()));
    return text;
}

std::string SettingsFile::value(const char* key) const {
    return value(section, key);
}

}  // namespace qorctl
