#include "Pressure.h"

#include <cstdlib>
#include <string>

namespace soak {

Pressure::Pressure()
    : file_(CreateFileA("Z:\\proc\\pressure\\cpu", GENERIC_READ, FILE_SHARE_READ, nullptr,
                        OPEN_EXISTING, 0, nullptr)) {}

Pressure::~Pressure() {
    if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
}

std::optional<std::uint64_t> Pressure::totalUs() const {
    char text[512] = "";
    DWORD size = 0;
    if (file_ == INVALID_HANDLE_VALUE ||
        SetFilePointer(file_, 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER ||
        !ReadFile(file_, text, sizeof text - 1, &size, nullptr))
        return std::nullopt;
    const std::string words(text, size);
    const std::size_t at = words.find("total=");
    if (at == std::string::npos) return std::nullopt;
    return std::strtoull(words.c_str() + at + 6, nullptr, 10);
}

}  // namespace soak
