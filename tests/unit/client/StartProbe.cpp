// What a started program can tell of its start.
//
// usage: " -external_operating FILE": writes its command line and the show state that it was asked
// for into the file, and lives until there is a FILE.end, 10 s at most.

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

int main() {
    const char* const line = GetCommandLineA();
    const char* const file = std::strrchr(line, ' ');
    STARTUPINFOA startup = {};
    GetStartupInfoA(&startup);
    FILE* const report = file != nullptr ? std::fopen(file + 1, "w") : nullptr;
    if (report == nullptr) return 1;
    const bool isAsked = (startup.dwFlags & STARTF_USESHOWWINDOW) != 0;
    std::fprintf(report, "%s\nshow %d\n", line, isAsked ? int{startup.wShowWindow} : -1);
    std::fclose(report);
    const std::string end = std::string(file + 1) + ".end";
    for (int i = 0; i < 1000 && !DeleteFileA(end.c_str()); ++i) Sleep(10);
    return 0;
}
