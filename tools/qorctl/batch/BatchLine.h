#pragma once

#include <string>
#include <vector>

namespace qorctl {

/// The words of one line of a batch. Words are separated by blanks or tabs; a word, or a part of
/// it, between double quotes may hold blanks and "#" ("" inside quotes is one quote); from "#" at
/// the beginning of a word on, the line is a comment. Backslashes are themselves: paths are
/// written as they are. Throws std::invalid_argument for a quote that is not closed.
std::vector<std::string> wordsOf(const std::string& line);

}  // namespace qorctl
