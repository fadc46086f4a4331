#include "config/Names.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace simulator {

namespace {

/// A model may have thousands of parameters.
constexpr std::size_t maxListed = 60;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    });
    return text;
}

/// How many letters must be added, dropped or replaced to make one name of the other.
std::size_t mistakesBetween(const std::string& left, const std::string& right) {
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char letter : left) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t replaced = diagonal + (letter == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
        }
    }
    return row.back();
}

/// Two thirds of a name must be right, or every short name would be near every other one.
std::size_t mistakesAllowed(const std::string& name) {
    return std::max<std::size_t>(1, name.size() / 3);
}

std::string listOf(const Names& known) {
    std::string list;
    for (std::size_t i = 0; i < known.size() && i < maxListed; ++i) {
        list += (i == 0 ? "" : ", ") + known[i];
    }
    if (known.size() <= maxListed) return list;
    return list + " and " + std::to_string(known.size() - maxListed) + " more";
}

}  // namespace

std::string nearestName(const std::string& written, const Names& known) {
    const std::string wrong = lowered(written);
    std::string nearest;
    std::size_t fewest = 0;
    for (const std::string& name : known) {
        const std::size_t mistakes = mistakesBetween(wrong, lowered(name));
        if (mistakes > mistakesAllowed(name)) continue;
        if (!nearest.empty() && mistakes >= fewest) continue;
        nearest = name;
        fewest = mistakes;
    }
    return nearest;
}

std::string hintFor(const std::string& written, const Names& known) {
    const std::string nearest = nearestName(written, known);
    if (nearest.empty()) return " - known: " + listOf(known);
    return " - did you mean \"" + nearest + "\"? Known: " + listOf(known);
}

}  // namespace simulator
