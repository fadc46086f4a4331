#include "TextKind.h"

#include <algorithm>

namespace qorctl {
namespace {

constexpr double firstShown = 0x20;
constexpr double unused = 0x7F;  // no character
constexpr double highest = 0xFF;

bool isCharacter(double value) {
    const bool isCode = value >= 0 && value <= highest && value == static_cast<int>(value);
    return isCode && value != unused && (value >= firstShown || value == 0);
}

bool isSeen(double value) {
    return value > firstShown && value < highest;
}

}  // namespace

bool couldBeText(const std::vector<double>& values, const std::string& unit) {
    return unit.empty() && values.size() != 1 &&
           std::all_of(values.begin(), values.end(), isCharacter);
}

bool looksLikeText(const std::vector<double>& values, const std::string& unit) {
    return couldBeText(values, unit) && std::any_of(values.begin(), values.end(), isSeen);
}

std::string withoutPadding(std::string text) {
    text.resize(std::min(text.size(), text.find('\0')));
    while (!text.empty() && (text.back() == ' ' || text.back() == '\xFF')) text.pop_back();
    return text;
}

}  // namespace qorctl
