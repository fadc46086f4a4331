#include "batch/BatchLine.h"

#include <stdexcept>

namespace qorctl {
namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

/// The word that begins at `at`, which is left behind it.
std::string wordAt(const std::string& line, std::size_t& at) {
    std::string word;
    bool quoted = false;
    for (; at < line.size() && (quoted || !isBlank(line[at])); ++at) {
        if (line[at] != '"') {
            word += line[at];
        } else if (quoted && at + 1 < line.size() && line[at + 1] == '"') {
            word += line[at++];
        } else {
            quoted = !quoted;
        }
    }
    if (quoted) throw std::invalid_argument("a quote is not closed");
    return word;
}

}  // namespace

std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    for (std::size_t at = 0; at < line.size();) {
        if (isBlank(line[at])) {
            ++at;
            continue;
        }
        if (line[at] == '#') break;
        words.push_back(wordAt(line, at));
    }
    return words;
}

}  // namespace qorctl
