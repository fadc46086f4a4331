#include "doctor/FileAccess.h"

#include <windows.h>

#include <fmt/format.h>

namespace qorctl::doctor {
namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Opens and closes; 0 or the error.
DWORD tryOpening(const std::string& path, DWORD access, DWORD how, DWORD flags) {
    HANDLE const file = CreateFileA(path.c_str(), access, shareAll, nullptr, how, flags, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return 0;
}

/// Makes a file that goes by itself. Not that file: a host that makes it in this very moment would
/// lose it.
DWORD tryMakingBeside(const std::string& path) {
    return tryOpening(fmt::format("{}.doctor-{}", path, GetCurrentProcessId()),
                      GENERIC_WRITE | DELETE, CREATE_NEW,
                      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
}

}  // namespace

WriteAccess WriteAccess::to(const std::string& path) {
    WriteAccess access;
    const DWORD attributes = GetFileAttributesA(path.c_str());
    access.fileExists = attributes != INVALID_FILE_ATTRIBUTES;
    if (access.fileExists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        access.reason = "it is a folder";
        return access;
    }
    const DWORD error = access.fileExists ? tryOpening(path, GENERIC_WRITE, OPEN_EXISTING, 0)
                                          : tryMakingBeside(path);
    access.isPossible = error == 0;
    if (!access.isPossible) access.reason = systemText(error);
    return access;
}

std::string systemText(unsigned long error) {
    char text[512] = "";
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, sizeof text, nullptr);
    while (length > 0 && (text[length - 1] <= ' ' && text[length - 1] >= 0)) --length;
    return fmt::format("{} (error {})", std::string(text, length), error);
}

}  // namespace qorctl::doctor
