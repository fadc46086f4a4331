#include "common/LastError.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace common {
namespace {

struct FreeLocal {
    void operator()(char* text) const { LocalFree(text); }
};
using SystemText = std::unique_ptr<char, FreeLocal>;

SystemText systemTextOf(DWORD code) {
    char* text = nullptr;
    const DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD userLanguage = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
    // With "allocate buffer" the buffer argument receives the address of the text.
    FormatMessageA(flags, nullptr, code, userLanguage, reinterpret_cast<char*>(&text), 0, nullptr);
    return SystemText(text);
}

}  // namespace

std::string lastErrorText() {
    const DWORD code = GetLastError();
    const SystemText text = systemTextOf(code);
    char line[4096];
    std::snprintf(line, sizeof line, "code: %d  text: %s", static_cast<int>(code),
                  text ? text.get() : "(NULL)");
    std::string result(line);
    std::replace(result.begin(), result.end(), '\r', ' ');
    std::replace(result.begin(), result.end(), '\n', ' ');
    return result;
}

KeptLastError::KeptLastError() : code_(GetLastError()) {}

KeptLastError::~KeptLastError() {
    SetLastError(code_);
}

}  // namespace common
