#include "app/CommandLine.h"

#include <algorithm>

namespace simulator {

namespace {

constexpr const char* operatingSwitch = "-external_operating";

bool isBlank(char character) {
    return character == ' ' || character == '\t';
}

/// One word, quoted or not; moves position behind it.
std::string wordAt(const std::string& line, std::size_t& position) {
    std::string word;
    bool quoted = false;
    for (; position < line.size() && (quoted || !isBlank(line[position])); ++position) {
        if (line[position] == '"') {
            quoted = !quoted;
        } else {
            word.push_back(line[position]);
        }
    }
    return word;
}

}  // namespace

std::vector<std::string> argumentsOf(const std::string& commandLine) {
    std::vector<std::string> arguments;
    std::size_t position = 0;
    wordAt(commandLine, position);  // the program name; empty before a leading blank
    while (true) {
        while (position < commandLine.size() && isBlank(commandLine[position])) ++position;
        if (position == commandLine.size()) return arguments;
        arguments.push_back(wordAt(commandLine, position));
    }
}

std::string settingsPathIn(const std::vector<std::string>& arguments) {
    const auto found = std::find(arguments.begin(), arguments.end(), operatingSwitch);
    if (found != arguments.end() && found + 1 != arguments.end()) return *(found + 1);
    if (arguments.size() == 1 && arguments[0] != operatingSwitch) return arguments[0];
    return {};
}

bool isExternallyOperated(const std::vector<std::string>& arguments) {
    return std::find(arguments.begin(), arguments.end(), operatingSwitch) != arguments.end();
}

}  // namespace simulator
