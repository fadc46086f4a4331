#include "trace/TraceSettings.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace tracelog {
namespace {

constexpr std::string_view separators = " ,\t\n";

bool contains(std::string_view line, std::string_view keyword) {
    return line.find(keyword) != std::string_view::npos;
}

/// The text behind the first "=", blanks skipped and the line end removed; empty without one.
std::string_view valueOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return {};
    const std::size_t first = line.find_first_not_of(' ', equals + 1);
    if (first == std::string_view::npos) return {};
    return line.substr(first, line.find_first_of("\r\n", first) - first);
}

/// The decimal number that a line gives, read by `convert`, which wants a zero behind it.
template <class Number, class Converted>
void readInteger(std::string_view line, Number& destination,
                 Converted (*convert)(const char*, char**, int)) {
    FixedText<TraceSettings::maxLineChars> value;
    value.append(valueOf(line));
    if (!value.empty()) destination = convert(value.c_str(), nullptr, 10);
}

void appendTokens(std::string_view line, TraceSettings::ModuleList& list) {
    const std::string_view value = valueOf(line);
    if (value.empty()) return;
    if (!list.empty()) list.append(" ");
    list.append(value);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view white = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(white);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(white) - first + 1);
}

bool readFileRequest(std::string_view line, TraceSettings::FileRequest& file) {
    const std::string_view value = valueOf(line);
    const std::size_t comma = value.find(',');
    file.path.assign(trimmed(value.substr(0, comma)));
    const bool hasMode = comma != std::string_view::npos;
    file.mode.assign(hasMode ? trimmed(value.substr(comma + 1)) : std::string_view());
    if (file.mode.empty()) file.mode.assign("w");
    return !file.path.empty();
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                     [](unsigned char a, unsigned char b) {
                                                         return std::tolower(a) == std::tolower(b);
                                                     });
}

bool hasToken(std::string_view list, std::string_view name) {
    std::size_t first = list.find_first_not_of(separators);
    while (first != std::string_view::npos) {
        const std::size_t end = list.find_first_of(separators, first);
        if (equalIgnoringCase(list.substr(first, end - first), name)) return true;
        first = list.find_first_not_of(separators, end);
    }
    return false;
}

}  // namespace

bool TraceSettings::applyLine(std::string_view line, FileRequest& file) noexcept {
    if (line.substr(0, 1) == "#") return false;
    // The order of these tests is part of the file format.
    if (contains(line, "notrace")) {
        enabled = false;
    } else if (contains(line, "tid")) {
        threadColumn = true;
    } else if (contains(line, "tc")) {
        tickColumn = true;
    } else if (contains(line, "hpc")) {
        hpcColumn = true;
    } else if (contains(line, "dt")) {
        dateColumn = true;
    } else if (contains(line, "nid")) {
        indentColumn = false;
    } else if (contains(line, "tl")) {
        readInteger(line, verbosityLimit, std::strtol);
    } else if (contains(line, "ts")) {
        readInteger(line, categoryMask, std::strtoul);
    } else if (contains(line, "tfr")) {
        readInteger(line, refreshSeconds, std::strtol);
        refreshSeconds = std::max<std::int32_t>(refreshSeconds, 0);
    } else if (contains(line, "include")) {
        appendTokens(line, includeList);
    } else if (contains(line, "exclude")) {
        appendTokens(line, excludeList);
    } else if (contains(line, "tf")) {
        return readFileRequest(line, file);
    }
    return false;
}

bool TraceSettings::passesModule(std::string_view moduleName) const noexcept {
    if (!includeList.empty()) return hasToken(includeList, moduleName);
    return !hasToken(excludeList, moduleName);
}

TraceSettings::Header TraceSettings::header() const noexcept {
    Header words;
    if (levelColumn) words.append("ts ");
    if (threadColumn) words.append("tid ");
    if (dateColumn) words.append("dt ");
    if (tickColumn) words.append("tc ");
    if (hpcColumn) words.append("hpc ");
    words.append("\n");
    return words;
}

}  // namespace tracelog
