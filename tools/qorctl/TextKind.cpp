#include "TextKind.h"

#include <algorithm>
#include <cctype>

namespace qorctl {
namespace {

constexpr double firstShown = 0x20;
constexpr double unused = 0x7F;  // no character
constexpr double highest = 0xFF;

bool isCharacter(double value) {
    const bool isCode = value >= 0 && value <= highest && value == static_cast<int>(value);
    return isCode && value != unused && (value >= firstShown || value == 0);
}

/// Of what most texts are made of mostly.
bool isUsual(double value) {
    return std::isalnum(static_cast<int>(value)) != 0 && value < unused;
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
    if (!couldBeText(values, unit)) return false;
    const auto end = std::find_if(values.rbegin(), values.rend(), isSeen).base();
    const bool isPadded = end != values.end();
    const bool isVaried =
        std::any_of(values.begin(), end, [&](double each) { return each != values.front(); });
    const auto usual = std::count_if(values.begin(), end, isUsual);
    return end != values.begin() && (isPadded || isVaried) && 2 * usual >= end - values.begin();
}

std::string withoutPadding(std::string text) {
    text.resize(std::min(text.size(), text.find('\0')));
    while (!text.empty() && (text.back() == ' ' || text.back() == '\xFF')) text.pop_back();
    return text;
}

}  // namespace qorctl
