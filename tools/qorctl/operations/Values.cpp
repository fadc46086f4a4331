#include "operations/Values.h"

#include <fmt/format.h>

#include <cmath>

namespace qorctl {

std::string textOf(const std::vector<double>& values) {
    return fmt::format("{}", fmt::join(values, " "));
}

nlohmann::json jsonNumber(double value) {
    if (std::isfinite(value)) return value;
    return fmt::format("{}", value);
}

nlohmann::json jsonOf(const std::vector<double>& values) {
    nlohmann::json array = nlohmann::json::array();
    for (const double value : values) array.push_back(jsonNumber(value));
    return array;
}

}  // namespace qorctl
