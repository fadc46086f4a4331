#include "JsonText.h"

#include <windows.h>

namespace qorctl {
namespace {

std::wstring wideOf(const std::string& ansi) {
    const int length = static_cast<int>(ansi.size());
    const int wanted = MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(wanted), L'\0');
    MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, wide.data(), wanted);
    return wide;
}

}  // namespace

std::string utf8Of(const std::string& ansi) {
    const std::wstring wide = wideOf(ansi);
    const int length = static_cast<int>(wide.size());
    const int wanted =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(wanted), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), wanted, nullptr, nullptr);
    return utf8;
}

std::string printed(const nlohmann::json& object) {
    return object.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string printedOnOneLine(const nlohmann::json& object) {
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace qorctl
