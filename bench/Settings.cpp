#include "Settings.h"

#include <windows.h>

#include <fstream>

#include "Process.h"

namespace {

std::string pathOf(const std::string& id) {
    char folder[MAX_PATH] = "";
    GetTempPathA(sizeof folder, folder);
    return std::string(folder) + "qor-bench-" + id + ".ini";
}

std::string idOf(const std::string& who) {
    return who + "-" + std::to_string(GetCurrentProcessId());
}

}  // namespace

std::string writeSettings(Transport transport, const std::string& who, Answers answers) {
    const bool useTcp = transport == Transport::tcp;
    const std::string id = idOf(who) + (useTcp ? "-tcp" : "-window");
    std::string path = pathOf(id);
    std::ofstream(path) << "[CommonSettings]\nQORexecutable=" << programFolder()
                        << "qor-simulator.exe\nUseTcp=" << (useTcp ? "true" : "false")
                        << "\nServerIp=127.0.0.1\nTcpPort=" << freePort()
                        << "\nServerPipeName=qor-bench server " << id
                        << "\nClientPipeName=qor-bench client " << id
                        << "\n[Simulator]\nModel=" << programFolder() << "engine.json\nAnswerStyle="
                        << (answers == Answers::stamped ? "stamped" : "separate")
                        << "\nConnectMs=50\nExitWithoutClientMs=5000\n";
    return path;
}

std::string writeSettings(unsigned int port, const std::string& who) {
    std::string path = pathOf(idOf(who));
    std::ofstream(path) << "[CommonSettings]\nUseTcp=true\nServerIp=127.0.0.1\nTcpPort=" << port
                        << "\n";
    return path;
}
