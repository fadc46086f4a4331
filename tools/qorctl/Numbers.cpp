#include "Numbers.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <regex>

namespace qorctl {
namespace {

bool matches(const std::string& word, const char* pattern) {
    return std::regex_match(word, std::regex(pattern, std::regex::icase));
}

bool isHex(const std::string& word) {
    return matches(word, "0x[0-9a-f]+");
}

/// 010: eight to some, ten to others.
std::string whyAmbiguous(const std::string& word) {
    if (!matches(word, "[+-]?0[0-9].*")) return {};
    const std::string digits = word.substr(word.find_first_of("0123456789"));
    const std::size_t first = digits.find_first_not_of('0');
    const bool isPlain = first != std::string::npos && matches(digits.substr(first), "[0-9]+");
    if (!isPlain) return word + " is ambiguous: write it without the leading zeros";
    const std::string number = digits.substr(first);
    return fmt::format("{0} is ambiguous: write {1} (decimal) or 0x{1}", word, number);
}

std::string whyTooLarge(const std::string& word) {
    return word + " is too large: 4294967295 (0xFFFFFFFF) at most";
}

/// `digits` in a base; empty `word` means that it does not fit into 32 bits.
std::string decimalOf(const std::string& digits, int base) {
    constexpr std::size_t longest = 16;  // digits that 64 bits can always hold
    const std::size_t first = digits.find_first_not_of('0');
    const std::string counting = first == std::string::npos ? "0" : digits.substr(first);
    if (counting.size() > longest) return {};
    const std::uint64_t number = std::stoull(counting, nullptr, base);
    return number > 0xFFFFFFFFu ? std::string() : std::to_string(number);
}

}  // namespace

const char* const numbersHelp =
    "Numbers are decimal (26) or hexadecimal behind 0x (0x1A), never octal: 010 is refused. Rows\n"
    "of bytes are hexadecimal, two digits for each byte, with or without blanks: 0A 1F or 0A1F.\n";

std::string whyNotWhole(std::string& word) {
    std::string why = whyAmbiguous(word);
    if (!why.empty()) return why;
    if (!isHex(word) && !matches(word, "[0-9]+"))
        return word + " is not a number: write 26 or 0x1A, for instance";
    const std::string decimal = isHex(word) ? decimalOf(word.substr(2), 16) : decimalOf(word, 10);
    if (decimal.empty()) return whyTooLarge(word);
    word = decimal;
    return {};
}

std::string whyNotReal(std::string& word) {
    std::string why = whyAmbiguous(word);
    if (!why.empty()) return why;
    if (isHex(word)) return whyNotWhole(word);
    const bool isNumber =
        matches(word, "[+-]?(([0-9]+(\\.[0-9]*)?|\\.[0-9]+)(e[+-]?[0-9]+)?|nan|inf|infinity)");
    return isNumber ? std::string() : word + " is not a number: write 26, -0.5 or 0x1A";
}

CLI::Option* whole(CLI::Option* option) {
    return option->transform(CLI::Validator(whyNotWhole, ""));
}

CLI::Option* real(CLI::Option* option) {
    return option->transform(CLI::Validator(whyNotReal, ""));
}

}  // namespace qorctl
