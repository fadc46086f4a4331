#include "TraceFile.h"

#include <cstdio>
#include <fstream>
#include <utility>

namespace qorctl {
namespace {

// The level column of the trace: '3' error, '2' warning, '1' information, followed by a tab. A
// message of several lines has the column on its first line only.
constexpr char errorLevel = '3';
constexpr char warningLevel = '2';
const char* const startFailureText = "Exception when starting QOR Remote agent thread";

bool hasLevel(const std::string& line) {
    return line.size() >= 2 && line[0] >= '0' && line[0] <= '3' && line[1] == '\t';
}

std::string messageOf(const std::string& line) {
    const std::size_t column = hasLevel(line) ? line.rfind('\t') + 1 : 0;
    const std::size_t first = line.find_first_not_of(' ', column);
    return first == std::string::npos ? std::string() : line.substr(first);
}

std::size_t findLevel(const std::vector<std::string>& lines, std::size_t from, char level) {
    for (std::size_t i = from; i < lines.size(); ++i)
        if (hasLevel(lines[i]) && lines[i][0] == level) return i;
    return lines.size();
}

/// The message that begins in line `first`, with its further lines.
std::string wholeMessage(const std::vector<std::string>& lines, std::size_t first) {
    std::string message = messageOf(lines[first]);
    for (std::size_t i = first + 1; i < lines.size() && !hasLevel(lines[i]); ++i)
        message += " " + lines[i];
    return message;
}

/// What follows "text, ", without the full stop at the end.
std::string reasonBehind(const std::string& message, std::size_t position) {
    const std::size_t comma = message.find(", ", position);
    std::string reason =
        comma == std::string::npos ? "an unknown exception" : message.substr(comma + 2);
    if (!reason.empty() && reason.back() == '.') reason.pop_back();
    return reason;
}

}  // namespace

TraceFile::TraceFile(std::string path) : path_(std::move(path)) {}

void TraceFile::removeOld() const {
    std::remove(path_.c_str());
}

std::vector<std::string> TraceFile::read() const {
    std::vector<std::string> lines;
    std::ifstream file(path_);
    std::string line;
    while (std::getline(file, line) && !file.eof()) lines.push_back(line);
    return lines;
}

bool TraceFile::exists() const {
    return std::ifstream(path_).is_open();
}

std::size_t TraceFile::lineCount() const {
    return read().size();
}

std::optional<TraceFile::Line> TraceFile::failureBehind(std::size_t after) const {
    const std::vector<std::string> lines = read();
    if (lines.size() <= after) return std::nullopt;
    std::size_t found = findLevel(lines, after, errorLevel);
    if (found == lines.size()) found = findLevel(lines, after, warningLevel);
    if (found == lines.size()) found = lines.size() - 1;
    return Line{found + 1, messageOf(lines[found])};
}

std::optional<TraceFile::Line> TraceFile::startFailure() const {
    const std::vector<std::string> lines = read();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].find(startFailureText) == std::string::npos) continue;
        const std::string message = wholeMessage(lines, i);
        return Line{i + 1, reasonBehind(message, message.find(startFailureText))};
    }
    return std::nullopt;
}

}  // namespace qorctl
