#include "client/ClientSettings.h"

#include <windows.h>

#include <cstring>

namespace {

const char* const section = "CommonSettings";

std::string readText(const std::string& path, const char* key, unsigned int maxChars) {
    std::string value(maxChars + 1, '\0');
    const DWORD length = GetPrivateProfileStringA(section, key, "", value.data(),
                                                  static_cast<DWORD>(value.size()), path.c_str());
    value.resize(length);
    return value;
}

unsigned int readNumber(const std::string& path, const char* key, int absent) {
    return GetPrivateProfileIntA(section, key, absent, path.c_str());
}

}  // namespace

ClientSettings ClientSettings::read(const std::string& path) {
    ClientSettings settings;
    settings.clientPipeName = readText(path, "ClientPipeName", maxValueChars);
    settings.serverPipeName = readText(path, "ServerPipeName", maxValueChars);
    settings.serverIp = readText(path, "ServerIp", maxValueChars);
    settings.tcpPort = readNumber(path, "TcpPort", 0);
    settings.useTcp = _stricmp(readText(path, "UseTcp", maxValueChars).c_str(), "true") == 0;
    return settings;
}

std::string ClientSettings::readExecutable(const std::string& path, unsigned int maxChars) {
    return readText(path, "QORexecutable", maxChars);
}

bool ClientSettings::readInitMfc(const std::string& path) {
    return readNumber(path, "InitMFC", 1) == 1;
}
