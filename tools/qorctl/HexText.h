#pragma once

#include <string>
#include <vector>

namespace qorctl {

/// Bytes as a person writes them: two hexadecimal digits each, with or without blanks, in as many
/// words as they like ("0A 1F", "0A1F"). Throws std::invalid_argument, telling the word, for
/// anything else.
std::string bytesOf(const std::vector<std::string>& words);

/// What is wrong with a word of bytes; empty if nothing is.
std::string whyNoBytes(const std::string& word);

/// "0A 1F"; empty for no bytes.
std::string hexOf(const std::string& bytes);

}  // namespace qorctl
