#include "Numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstring>

namespace qorctl {
namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isHexDigit(char character) {
    return std::isxdigit(static_cast<unsigned char>(character)) != 0;
}

bool areDigits(const std::string& word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), isDigit);
}

bool isHex(const std::string& word) {
    return word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X') &&
           std::all_of(word.begin() + 2, word.end(), isHexDigit);
}

/// A word as it is shown: nobody reads a thousand digits.
std::string shown(const std::string& word) {
    constexpr std::size_t longest = 40;
    return word.size() <= longest ? word : word.substr(0, longest) + "...";
}

bool isSign(char character) {
    return character == '+' || character == '-';
}

/// 010: eight to some, ten to others.
std::string whyAmbiguous(const std::string& word) {
    const std::string digits = !word.empty() && isSign(word.front()) ? word.substr(1) : word;
    if (digits.size() < 2 || digits[0] != '0' || !isDigit(digits[1])) return {};
    const std::string number =
        digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    if (!areDigits(number))
        return shown(word) + " is ambiguous: write it without the leading zeros";
    return fmt::format("{0} is ambiguous: write {1} (decimal) or 0x{1}", shown(word),
                       shown(number));
}

/// The rest of a number, taken from its front piece by piece.
class Rest {
public:
    explicit Rest(const std::string& text) : text_(text) {}

    bool isEmpty() const { return at_ == text_.size(); }
    bool take(const char* anyOf) {
        // strchr finds its own end, too.
        const bool fits = !isEmpty() && text_[at_] != '\0' && std::strchr(anyOf, text_[at_]);
        if (fits) ++at_;
        return fits;
    }
    bool takeDigits() {
        const std::size_t start = at_;
        while (!isEmpty() && isDigit(text_[at_])) ++at_;
        return at_ != start;
    }

private:
    const std::string& text_;
    std::size_t at_ = 0;
};

/// "-0.5", "5.", ".5e-3".
bool isDecimal(const std::string& word) {
    Rest rest(word);
    rest.take("+-");
    bool hasDigits = rest.takeDigits();
    if (rest.take(".")) hasDigits = rest.takeDigits() || hasDigits;
    if (!hasDigits) return false;
    if (!rest.take("eE")) return rest.isEmpty();
    rest.take("+-");
    return rest.takeDigits() && rest.isEmpty();
}

bool isNoNumberOrInfinite(const std::string& word) {
    const bool hasSign = !word.empty() && isSign(word.front());
    const std::string name = CLI::detail::to_lower(hasSign ? word.substr(1) : word);
    return name == "nan" || name == "inf" || name == "infinity";
}

std::string whyTooLarge(const std::string& word) {
    return shown(word) + " is too large: 4294967295 (0xFFFFFFFF) at most";
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
    if (!isHex(word) && !areDigits(word))
        return shown(word) + " is not a number: write 26 or 0x1A, for instance";
    const std::string decimal = isHex(word) ? decimalOf(word.substr(2), 16) : decimalOf(word, 10);
    if (decimal.empty()) return whyTooLarge(word);
    word = decimal;
    return {};
}

std::string whyNotFinite(std::string& word) {
    std::string why = whyAmbiguous(word);
    if (!why.empty()) return why;
    if (isHex(word)) return whyNotWhole(word);
    return isDecimal(word) ? std::string()
                           : shown(word) + " is not a number: write 26, -0.5 or 0x1A";
}

std::string whyNotReal(std::string& word) {
    return isNoNumberOrInfinite(word) ? std::string() : whyNotFinite(word);
}

CLI::Option* whole(CLI::Option* option) {
    return option->transform(CLI::Validator(whyNotWhole, ""));
}

CLI::Option* finite(CLI::Option* option) {
    return option->transform(CLI::Validator(whyNotFinite, ""));
}

CLI::Option* real(CLI::Option* option) {
    return option->transform(CLI::Validator(whyNotReal, ""));
}

}  // namespace qorctl
