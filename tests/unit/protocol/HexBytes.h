#pragma once

#include <cctype>
#include <stdexcept>
#include <string>

namespace testing_support {

/// "03 00 ff" as bytes. Blanks are skipped; 'text' between apostrophes stands for its characters.
inline std::string bytesOf(const std::string& hex) {
    const auto isHex = [&](std::size_t i) {
        return i < hex.size() && std::isxdigit(static_cast<unsigned char>(hex[i])) != 0;
    };
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); ++i) {
        if (hex[i] == ' ') continue;
        if (hex[i] == '\'') {
            const std::size_t end = hex.find('\'', i + 1);
            if (end == std::string::npos) throw std::invalid_argument("open text in: " + hex);
            bytes += hex.substr(i + 1, end - i - 1);
            i = end;
        } else if (isHex(i) && isHex(i + 1)) {
            bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
            ++i;
        } else {
            throw std::invalid_argument("not pairs of hex digits: " + hex);
        }
    }
    return bytes;
}

/// Bytes as "03 00 ff", for messages.
inline std::string hexOf(const std::string& bytes) {
    const char* const digits = "0123456789abcdef";
    std::string hex;
    for (const char byte : bytes) {
        if (!hex.empty()) hex += ' ';
        hex += digits[static_cast<unsigned char>(byte) >> 4];
        hex += digits[static_cast<unsigned char>(byte) & 15];
    }
    return hex;
}

/// One 32-bit word, little-endian.
inline std::string wordOf(unsigned int value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

}  // namespace testing_support
