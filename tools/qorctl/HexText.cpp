#include "HexText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace qorctl {
namespace {

bool isHexDigit(char character) {
    return std::isxdigit(static_cast<unsigned char>(character)) != 0;
}

void addBytes(const std::string& word, std::string& bytes) {
    const bool fits = word.size() % 2 == 0 && std::all_of(word.begin(), word.end(), isHexDigit);
    if (!fits)
        throw std::invalid_argument(word +
                                    " is no row of bytes: write 0A 1F or 0A1F, for instance");
    for (std::size_t i = 0; i < word.size(); i += 2)
        bytes += static_cast<char>(std::stoi(word.substr(i, 2), nullptr, 16));
}

}  // namespace

std::string bytesOf(const std::vector<std::string>& words) {
    std::string bytes;
    for (const std::string& word : words) {
        std::string part;
        for (const char character : word + " ") {
            if (character != ' ') {
                part += character;
            } else {
                addBytes(part, bytes);
                part.clear();
            }
        }
    }
    return bytes;
}

std::string whyNoBytes(const std::string& word) {
    try {
        bytesOf({word});
        return {};
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

std::string hexOf(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes)
        text += fmt::format("{}{:02X}", text.empty() ? "" : " ",
                            static_cast<unsigned int>(static_cast<unsigned char>(byte)));
    return text;
}

}  // namespace qorctl
