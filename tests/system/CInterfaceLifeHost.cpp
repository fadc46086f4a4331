// A host that loads the library by itself and leaves handles open when it frees it. It has its
// run-time libraries inside: nothing of them is in the process but what the library brings.
//
// usage: system_c_life_host REPORT SETTINGS HOW
//
// HOW is "ended" (a handle whose agent has ended), "live" (one that controls QOR), or "exit" (a
// live one, and the process ends without freeing anything). The report gets one line for each step;
// only its last line tells that the host lived to the end.

#include <windows.h>

#include <cstdio>
#include <cstring>

#include "QorControl.h"

namespace {

constexpr const char* library = "QorControlC.dll";

template <class Function>
Function* imported(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), name)));
}
#define IMPORTED(name) imported<decltype(name)>(#name)

/// Leaves a handle of QOR, or one whose agent has ended, and streams and a connect with it.
bool leaveHandle(const char* settings, bool isLive, FILE* report) {
    QorHandle handle = nullptr;
    QorStream stream = nullptr;
    const char* const name = "EngineSpeed";
    if (IMPORTED(QorOpen)(settings, 0, "", &handle) != QOR_OK) return false;
    if (!isLive) Sleep(500);  // so that the agent has ended, with its last word and its thread
    const int ping = IMPORTED(QorPingQor)(handle, 10000);
    std::fprintf(report, "ping: %s\n", IMPORTED(QorCauseName)(ping));
    if (isLive) {
        IMPORTED(QorConnectStart)(handle, nullptr, QOR_CONNECT_DEFAULT);
        IMPORTED(QorStartParamRead)(handle, &name, 1, 100, &stream);
    }
    // Within the library these are exceptions.
    std::fprintf(report, "refused: %s\n", IMPORTED(QorCauseName)(IMPORTED(QorPingQor)(nullptr, 0)));
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    FILE* const report = std::fopen(argv[1], "w");
    if (report == nullptr) return 2;
    std::setvbuf(report, nullptr, _IONBF, 0);
    HMODULE const module = LoadLibraryA(library);
    if (module == nullptr || !leaveHandle(argv[2], std::strcmp(argv[3], "ended") != 0, report))
        return 2;
    if (std::strcmp(argv[3], "exit") != 0) {
        std::fprintf(report, "freed: %d\n", FreeLibrary(module));
        Sleep(300);
        std::fprintf(report, "library: %s\n",
                     GetModuleHandleA(library) != nullptr ? "loaded" : "gone");
    }
    std::fprintf(report, "end\n");
    return std::fclose(report);
}
