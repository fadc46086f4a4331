// A host that frees the library although a thread of the library was let go. It is linked to none
// of the shared run-time libraries, so that these, too, come and go with the library.
//
// usage: system_life_host SETTINGS HOST TITLE REPORT
//
// The report gets one line for each step. Only its last line tells that the host lived to the end:
// a program that crashes while it has ended threads behind it can end with the code of success.

#include <winsock2.h>

#include <windows.h>

#include <cstdio>

#include "LifeProbe.h"
#include "support/TcpProcessFigures.h"

namespace {

constexpr const char* library = "QorControlFacade.dll";
constexpr const char* runTimeLibrary = "libstdc++-6.dll";  // (libgcc stays, always)
constexpr DWORD endMs = 60000;

const char* stateOf(const char* module) {
    return GetModuleHandleA(module) != nullptr ? "loaded" : "gone";
}

template <class Condition>
void await(Condition holds) {
    const ULONGLONG start = GetTickCount64();
    while (!holds() && GetTickCount64() - start < endMs) Sleep(10);
}

bool destroyFacadeOfPlugIn(char** arguments, FILE* report) {
    HMODULE const plugIn = LoadLibraryA("system_life_probe.dll");
    if (plugIn == nullptr) return false;
    const auto destroy = reinterpret_cast<decltype(&destroyFacade)>(
        reinterpret_cast<void*>(GetProcAddress(plugIn, "destroyFacade")));
    const unsigned long elapsedMs = destroy(arguments[0], arguments[1], arguments[2]);
    std::fprintf(report, elapsedMs >= 5000 ? "let go\n" : "ended after %lu ms\n", elapsedMs);
    return FreeLibrary(plugIn) != FALSE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    FILE* const report = std::fopen(argv[4], "w");
    if (report == nullptr) return 2;
    std::setvbuf(report, nullptr, _IONBF, 0);
    const unsigned threads = tcp::threadCount();
    if (!destroyFacadeOfPlugIn(argv + 1, report)) return 2;
    std::fprintf(report, "freed: %s\n", stateOf(library));
    await([] { return GetModuleHandleA(library) == nullptr; });
    // A thread that ran into code that is gone does not end: it waits for the crash to be reported.
    await([&] { return tcp::threadCount() == threads; });
    std::fprintf(report, "library: %s\n", stateOf(library));
    std::fprintf(report, "run-time library: %s\n", stateOf(runTimeLibrary));
    std::fprintf(report, tcp::threadCount() == threads ? "end\n" : "a thread does not end\n");
    return std::fclose(report);
}
