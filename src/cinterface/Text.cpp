#include "cinterface/Text.h"

#include <windows.h>

#include <algorithm>

namespace cinterface::text {
namespace {

/// All code pages of the system have these characters, and in one byte.
bool isPlain(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

std::optional<std::wstring> wideOf(unsigned int codePage, DWORD flags, const std::string& bytes) {
    const int length = static_cast<int>(bytes.size());
    const int needed = MultiByteToWideChar(codePage, flags, bytes.data(), length, nullptr, 0);
    if (needed <= 0) return std::nullopt;
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(codePage, flags, bytes.data(), length, wide.data(), needed);
    return wide;
}

/// `replaced`: null, or what is to be told whether a character was missing in the code page.
std::optional<std::string> narrowOf(unsigned int codePage, DWORD flags, const std::wstring& wide,
                                    BOOL* replaced) {
    const int length = static_cast<int>(wide.size());
    const int needed =
        WideCharToMultiByte(codePage, flags, wide.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed <= 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(codePage, flags, wide.data(), length, bytes.data(), needed, nullptr,
                        replaced);
    return bytes;
}

std::optional<std::string> utf8With(DWORD flags, const std::string& ansi) {
    const auto wide = wideOf(CP_ACP, flags, ansi);
    return wide ? narrowOf(CP_UTF8, 0, *wide, nullptr) : std::nullopt;
}

}  // namespace

std::optional<std::string> ansiOf(const std::string& utf8) {
    if (isPlain(utf8)) return utf8;
    const auto wide = wideOf(CP_UTF8, MB_ERR_INVALID_CHARS, utf8);
    if (!wide) return std::nullopt;
    // The code page of a process can be UTF-8 itself, for which the system knows neither the flag
    // nor replacements.
    if (GetACP() == CP_UTF8) return utf8;
    BOOL replaced = FALSE;
    auto ansi = narrowOf(CP_ACP, WC_NO_BEST_FIT_CHARS, *wide, &replaced);
    return replaced ? std::nullopt : ansi;
}

std::optional<std::string> utf8Of(const std::string& ansi) {
    return isPlain(ansi) ? ansi : utf8With(MB_ERR_INVALID_CHARS, ansi);
}

std::string shownUtf8Of(const std::string& ansi) {
    return isPlain(ansi) ? ansi : utf8With(0, ansi).value_or(std::string());
}

}  // namespace cinterface::text
