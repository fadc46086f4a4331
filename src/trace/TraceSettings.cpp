#include "trace/TraceSettings.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace tracelog {
namespace {

constexpr std::size_t maxListChars = 249;
const char* const separators = " ,\t\n";

bool contains(const std::string& line, const char* keyword) {
    return line.find(keyword) != std::string::npos;
}

/// The text behind the first "=", blanks skipped and the line end removed; empty without one.
std::string valueOf(const std::string& line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) return {};
    const std::size_t first = line.find_first_not_of(' ', equals + 1);
    if (first == std::string::npos) return {};
    return line.substr(first, line.find_first_of("\r\n", first) - first);
}

void readInteger(const std::string& line, std::int32_t& destination) {
    const std::string value = valueOf(line);
    if (!value.empty()) destination = std::strtol(value.c_str(), nullptr, 10);
}

void readInteger(const std::string& line, std::uint32_t& destination) {
    const std::string value = valueOf(line);
    if (!value.empty()) destination = std::strtoul(value.c_str(), nullptr, 10);
}

void appendTokens(const std::string& line, std::string& list) {
    const std::string value = valueOf(line);
    if (value.empty()) return;
    if (!list.empty()) list += ' ';
    list += value;
    if (list.size() > maxListChars) list.resize(maxListChars);
}

std::string trimmed(const std::string& text) {
    const char* const white = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(white);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(white) - first + 1);
}

bool readFileRequest(const std::string& line, TraceSettings::FileRequest& file) {
    const std::string value = valueOf(line);
    const std::size_t comma = value.find(',');
    file.path = trimmed(value.substr(0, comma));
    const std::string mode = comma == std::string::npos ? "" : trimmed(value.substr(comma + 1));
    file.mode = mode.empty() ? std::string("w") : mode;
    return !file.path.empty();
}

bool equalIgnoringCase(const std::string& left, const std::string& right) {
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                     [](unsigned char a, unsigned char b) {
                                                         return std::tolower(a) == std::tolower(b);
                                                     });
}

bool hasToken(const std::string& list, const std::string& name) {
    std::size_t first = list.find_first_not_of(separators);
    while (first != std::string::npos) {
        const std::size_t end = list.find_first_of(separators, first);
        if (equalIgnoringCase(list.substr(first, end - first), name)) return true;
        first = list.find_first_not_of(separators, end);
    }
    return false;
}

}  // namespace

bool TraceSettings::applyLine(const std::string& line, FileRequest& file) {
    if (line.compare(0, 1, "#") == 0) return false;
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
        readInteger(line, verbosityLimit);
    } else if (contains(line, "ts")) {
        readInteger(line, categoryMask);
    } else if (contains(line, "tfr")) {
        readInteger(line, refreshSeconds);
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

bool TraceSettings::passesModule(const std::string& moduleName) const {
    if (!includeList.empty()) return hasToken(includeList, moduleName);
    return !hasToken(excludeList, moduleName);
}

std::string TraceSettings::header() const {
    std::string words;
    if (levelColumn) words += "ts ";
    if (threadColumn) words += "tid ";
    if (dateColumn) words += "dt ";
    if (tickColumn) words += "tc ";
    if (hpcColumn) words += "hpc ";
    return words + "\n";
}

}  // namespace tracelog
