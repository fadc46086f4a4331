// The system's texts in code pages, with one of 256 characters that are the first of Unicode.
#include <windows.h>

#include <string>

namespace {

constexpr wchar_t replacement = 0xFFFD;

/// The character at the beginning, and how many bytes it takes; no bytes if it is no valid one.
struct Character {
    wchar_t value = replacement;
    std::size_t bytes = 0;
};

Character characterOf(const unsigned char* bytes, std::size_t count) {
    const unsigned char first = bytes[0];
    if (first < 0x80) return {static_cast<wchar_t>(first), 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || length > count) return {};
    std::uint32_t value = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return {};
        value = value << 6 | (bytes[i] & 0x3Fu);
    }
    const std::uint32_t least = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    const bool isSurrogate = value >= 0xD800 && value < 0xE000;
    if (value < least || value > 0x10FFFF || isSurrogate) return {};
    return {static_cast<wchar_t>(value), length};
}

void appendUtf8(std::string& text, std::uint32_t value) {
    if (value < 0x80) return text.push_back(static_cast<char>(value));
    if (value >= 0x10000) {
        text.push_back(static_cast<char>(0xF0 | value >> 18));
        text.push_back(static_cast<char>(0x80 | (value >> 12 & 0x3F)));
    } else if (value >= 0x800) {
        text.push_back(static_cast<char>(0xE0 | value >> 12));
    }
    if (value >= 0x800)
        text.push_back(static_cast<char>(0x80 | (value >> 6 & 0x3F)));
    else
        text.push_back(static_cast<char>(0xC0 | value >> 6));
    text.push_back(static_cast<char>(0x80 | (value & 0x3F)));
}

/// As the system hands out: without room just the length, 0 where the room does not do.
template <class Char>
int handOut(const std::basic_string<Char>& text, Char* out, int room) {
    const int length = static_cast<int>(text.size());
    if (room == 0) return length;
    if (length > room) return 0;
    text.copy(out, text.size());
    return length;
}

}  // namespace

UINT GetACP() noexcept {
    return 28591;
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* bytes, int count, wchar_t* wide,
                        int room) {
    if (count <= 0) return 0;
    std::wstring text;
    const auto* const all = reinterpret_cast<const unsigned char*>(bytes);
    for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
        Character next{static_cast<wchar_t>(all[at]), 1};
        if (codePage == CP_UTF8) next = characterOf(all + at, static_cast<std::size_t>(count) - at);
        if (next.bytes == 0 && (flags & MB_ERR_INVALID_CHARS) != 0) return 0;
        text.push_back(next.value);
        at += next.bytes == 0 ? 1 : next.bytes;
    }
    return handOut(text, wide, room);
}

int WideCharToMultiByte(UINT codePage, DWORD, const wchar_t* wide, int count, char* bytes, int room,
                        const char*, BOOL* replaced) {
    if (count <= 0) return 0;
    std::string text;
    for (int i = 0; i < count; ++i) {
        const auto value = static_cast<std::uint32_t>(wide[i]);
        const bool isLacking = codePage != CP_UTF8 && value > 255;
        if (isLacking && replaced != nullptr) *replaced = TRUE;
        if (codePage == CP_UTF8)
            appendUtf8(text, value);
        else
            text.push_back(isLacking ? '?' : static_cast<char>(value));
    }
    return handOut(text, bytes, room);
}
