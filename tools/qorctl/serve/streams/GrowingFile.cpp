#include "serve/streams/GrowingFile.h"

#include <windows.h>

namespace qorctl::serve {

GrowingFile::GrowingFile(const std::string& path)
    : handle_(CreateFileA(path.c_str(), GENERIC_READ,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}

GrowingFile::~GrowingFile() {
    if (handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
}

std::int64_t GrowingFile::size() const {
    DWORD high = 0;
    const DWORD low = GetFileSize(handle_, &high);
    if (handle_ == INVALID_HANDLE_VALUE || (low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR))
        return 0;
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(high) << 32) | low);
}

std::string GrowingFile::read(std::int64_t position, std::int64_t bytes) const {
    std::string text(static_cast<std::size_t>(bytes), '\0');
    LONG high = static_cast<LONG>(position >> 32);
    const LONG low = static_cast<LONG>(position & 0xFFFFFFFF);
    DWORD count = 0;
    if (handle_ != INVALID_HANDLE_VALUE) {
        SetFilePointer(handle_, low, &high, FILE_BEGIN);
        if (ReadFile(handle_, text.data(), static_cast<DWORD>(bytes), &count, nullptr) == FALSE)
            count = 0;
    }
    text.resize(count);
    return text;
}

}  // namespace qorctl::serve
