// What the guards of our programs do, in a program that needs them: built as those of the package
// are.
//
// usage: GuardProbe stack|copy|report FAULT
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

volatile std::size_t length = 0;  // what no compiler knows

/// Writes behind the end of its buffer, as far as the return address.
__attribute__((noinline)) void overrunStack() {
    volatile char buffer[16];
    for (std::size_t i = 0; i < length; ++i) buffer[i] = 'x';
    std::printf("%c", buffer[0]);
}

char held[16];

/// Copies more than the target holds; what lies behind it may well be nobody's.
__attribute__((noinline)) void copyTooMuch() {
    const char source[64] = "";
    std::memcpy(held, source, length);
}

void commit(const std::string& fault) {
    std::puts("it begins");
    std::fflush(stdout);
    length = 48;
    if (fault == "stack") overrunStack();
    if (fault == "copy") copyTooMuch();
    std::puts("it goes on");
}

/// The exit code of this program with a fault: a shell sees only a part of it.
int report(const std::string& program, const std::string& fault) {
    std::string line = "\"" + program + "\" " + fault;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(program.c_str(), &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process))
        return 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    std::printf("ended with %08lX\n", static_cast<unsigned long>(code));
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    char program[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    if (count == 3) return report(program, arguments[2]);
    if (count == 2) commit(arguments[1]);
    return 0;
}
