#include "Settings.h"

#include <windows.h>

#include <fstream>

#include "Process.h"

const char* nameOf(Transport transport) {
    return transport == Transport::tcp ? "TCP" : "window";
}

Meeting meetPeer(Transport transport, const std::string& who) {
    const std::string id =
        who + "-" + std::to_string(GetCurrentProcessId()) + "-" + nameOf(transport);
    char folder[MAX_PATH] = "";
    GetTempPathA(sizeof folder, folder);
    Meeting meeting = {transport, freePort(), "qor-bench server " + id, "qor-bench client " + id,
                       std::string(folder) + "qor-bench-" + id + ".ini"};
    std::ofstream(meeting.settingsPath)
        << "[CommonSettings]\nUseTcp=" << (transport == Transport::tcp ? "true" : "false")
        << "\nServerIp=127.0.0.1\nTcpPort=" << meeting.port
        << "\nServerPipeName=" << meeting.serverTitle << "\nClientPipeName=" << meeting.clientTitle
        << "\n";
    return meeting;
}

std::string writeSettings(Transport transport, const std::string& who, Answers answers) {
    const Meeting meeting = meetPeer(transport, who);
    std::ofstream(meeting.settingsPath, std::ios::app)
        << "QORexecutable=" << programFolder()
        << "qor-simulator.exe\n[Simulator]\nModel=" << programFolder()
        << "engine.json\nAnswerStyle=" << (answers == Answers::stamped ? "stamped" : "separate")
        << "\nConnectMs=50\nExitWithoutClientMs=5000\n";
    return meeting.settingsPath;
}
