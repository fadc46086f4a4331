// The one module that there is, its process and its last error.
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "common/LastError.h"

namespace {

char commandLine[] = "host";

}  // namespace

HMODULE GetModuleHandleA(const char*) {
    return commandLine;  // it must only not be null
}

DWORD GetModuleFileNameA(HMODULE, char* path, DWORD size) {
    return static_cast<DWORD>(std::snprintf(path, size, "/host"));
}

char* GetCommandLineA() {
    return commandLine;
}

HANDLE CreateActCtxA(const ACTCTXA*) {
    return INVALID_HANDLE_VALUE;
}

void ReleaseActCtx(HANDLE) {}

common::KeptLastError::KeptLastError() : code_(GetLastError()) {}

common::KeptLastError::~KeptLastError() {
    SetLastError(static_cast<DWORD>(code_));
}
