// The system's reading of settings files, on a text in memory: sections and keys in any case of
// letters, blanks around them and around values, one pair of quotes, comments behind ";" at the
// beginning of a line, the first key of a name, and the cut of what is too long for the buffer.
#include "Profile.h"

#include <strings.h>
#include <windows.h>

#include <algorithm>
#include <optional>
#include <string>

namespace {

std::string content;

std::string_view trimmed(std::string_view text) {
    const char* const blanks = " \t\r\v\f\x1A";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isSame(std::string_view left, std::string_view right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

std::string_view unquoted(std::string_view value) {
    const bool isQuoted = value.size() >= 2 && value.front() == value.back() &&
                          (value.front() == '"' || value.front() == '\'');
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

std::optional<std::string_view> find(const char* section, const char* key) {
    bool isInside = false;
    std::string_view rest = content;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = trimmed(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.empty() || line.front() == ';') continue;
        if (line.front() == '[') {
            const std::size_t close = std::min(line.find(']'), line.size());
            isInside = isSame(trimmed(line.substr(1, close - 1)), section);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (isInside && equals != std::string_view::npos &&
            isSame(trimmed(line.substr(0, equals)), key))
            return unquoted(trimmed(line.substr(equals + 1)));
    }
    return std::nullopt;
}

}  // namespace

void setProfile(std::string_view text) {
    content = text.substr(0, text.find('\0'));
}

DWORD GetPrivateProfileStringA(const char* section, const char* key, const char* standard,
                               char* buffer, DWORD size, const char*) noexcept {
    const std::string_view value = find(section, key).value_or(standard);
    if (size == 0) return 0;
    const std::size_t length = std::min<std::size_t>(value.size(), size - 1);
    std::copy_n(value.data(), length, buffer);
    buffer[length] = '\0';
    return static_cast<DWORD>(length);
}

unsigned int GetPrivateProfileIntA(const char* section, const char* key, int standard,
                                   const char*) noexcept {
    const auto value = find(section, key);
    if (!value) return static_cast<unsigned int>(standard);
    const bool isNegative = !value->empty() && value->front() == '-';
    unsigned int number = 0;
    for (std::size_t i = isNegative ? 1 : 0; i < value->size(); ++i) {
        const char digit = (*value)[i];
        if (digit < '0' || digit > '9') break;
        number = number * 10 + static_cast<unsigned int>(digit - '0');
    }
    return isNegative ? 0 - number : number;
}

int _stricmp(const char* left, const char* right) noexcept {
    return strcasecmp(left, right);
}
