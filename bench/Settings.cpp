#include "Settings.h"

#include <windows.h>

#include <fstream>

#include "Process.h"

std::string writeSettings(Transport transport, const std::string& who, Answers answers) {
    const bool useTcp = transport == Transport::tcp;
    const std::string id =
        who + "-" + std::to_string(GetCurrentProcessId()) + (useTcp ? "-tcp" : "-window");
    char folder[MAX_PATH] = "";
    GetTempPathA(sizeof folder, folder);
    std::string path = std::string(folder) + "qor-bench-" + id + ".ini";
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
