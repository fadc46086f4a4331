#include "client/ClientSettings.h"

#include <windows.h>

#include <cstring>

namespace {

const char* const section = "CommonSettings";

std::string readText(const std::string& path, const char* key,
                     unsigned int maxChars = ClientSettings::maxValueChars) {
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
    settings.path = path;
    settings.executable = readText(path, "QORexecutable", maxLaunchChars);
    settings.clientPipeName = readText(path, "ClientPipeName");
    settings.serverPipeName = readText(path, "ServerPipeName");
    settings.serverIp = readText(path, "ServerIp");
    settings.tcpPort = readNumber(path, "TcpPort", 0);
    settings.useTcp = _stricmp(readText(path, "UseTcp").c_str(), "true") == 0;
    settings.initMfc = readNumber(path, "InitMFC", 1) == 1;
    return settings;
}
