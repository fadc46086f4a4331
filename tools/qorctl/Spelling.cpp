#include "Spelling.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace qorctl {
namespace {

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string lowered(std::string text) {
    for (char& letter : text) letter = lowered(letter);
    return text;
}

std::string withoutGaps(const std::string& text) {
    std::string rest;
    for (const char letter : text)
        if (letter != ' ' && letter != '_' && letter != '-' && letter != '\t') rest += letter;
    return rest;
}

/// Letters to add, drop or replace, and neighbours to exchange, until both are the same.
std::size_t distanceOf(const std::string& left, const std::string& right) {
    std::vector<std::vector<std::size_t>> cost(left.size() + 1,
                                               std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i) {
        for (std::size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const std::size_t differs = left[i - 1] == right[j - 1] ? 0 : 1;
            cost[i][j] =
                std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + differs});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    }
    return cost[left.size()][right.size()];
}

}  // namespace

bool isSameName(const std::string& left, const std::string& right) {
    return lowered(left) == lowered(right);
}

bool isMisspelling(const std::string& written, const std::string& known) {
    if (isSameName(written, known)) return false;
    const std::string left = withoutGaps(lowered(written));
    const std::string right = withoutGaps(lowered(known));
    // Two thirds of a short name must be right, or every other name would be near.
    const std::size_t allowed = right.size() < 7 ? 1 : 2;
    const std::size_t longer = std::max(left.size(), right.size());
    const std::size_t shorter = std::min(left.size(), right.size());
    return longer - shorter <= allowed && distanceOf(left, right) <= allowed;
}

std::string nearestOf(const std::string& written, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const std::string& name : names) {
        // First what is cheap: what was written may be as long as a client likes.
        if (!isSameName(written, name) && !isMisspelling(written, name)) continue;
        const std::size_t distance = distanceOf(lowered(written), lowered(name));
        if (distance >= least) continue;
        least = distance;
        nearest = name;
    }
    return nearest;
}

}  // namespace qorctl
