#pragma once

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace testing_support {

/// The lines of a document of docs/; throws if it cannot be read.
inline std::vector<std::string> linesOfDocument(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

inline std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// "| a | b |" as {"a", "b"}.
inline std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::size_t begin = line.find('|');
    while (begin != std::string::npos && line.find('|', begin + 1) != std::string::npos) {
        const std::size_t end = line.find('|', begin + 1);
        cells.push_back(trimmed(line.substr(begin + 1, end - begin - 1)));
        begin = end;
    }
    return cells;
}

/// The rows of the table whose first line is `head`; throws if there is none.
inline std::vector<std::vector<std::string>> tableOf(const std::vector<std::string>& lines,
                                                     const std::string& head) {
    std::size_t line = 0;
    while (line < lines.size() && lines[line] != head) ++line;
    if (line == lines.size()) throw std::runtime_error("no table begins with " + head);
    std::vector<std::vector<std::string>> rows;
    for (line += 2; line < lines.size() && lines[line].rfind('|', 0) == 0; ++line)
        rows.push_back(cellsOf(lines[line]));
    return rows;
}

}  // namespace testing_support
