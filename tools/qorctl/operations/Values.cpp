#include "operations/Values.h"

#include <fmt/format.h>

#include <cmath>

namespace qorctl {

std::string textOf(const std::vector<double>& values) {
    return fmt::format("{}", fmt::join(values, " "));
}

nlohmann::json jsonOf(const std::vector<double>& values) {
    nlohmann::json array = nlohmann::json::array();
    for (const double value : values) {
        if (std::isfinite(value))
            array.push_back(value);
        else
            array.push_back(fmt::format("{}", value));
    }
    return array;
}

}  // namespace qorctl
