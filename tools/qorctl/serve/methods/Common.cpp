#include "serve/methods/Common.h"

#include <cmath>
#include <limits>

namespace qorctl::serve {
namespace {

double numberOf(const nlohmann::json& value) {
    if (value.is_number()) return value.get<double>();
    const std::string text = value.get<std::string>();
    if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    return text.front() == '-' ? -infinity : infinity;
}

nlohmann::json jsonOfNumber(double value) {
    if (std::isfinite(value)) return value;
    if (std::isnan(value)) return "NaN";
    return value < 0 ? "-Infinity" : "Infinity";
}

}  // namespace

std::vector<double> valuesOf(const nlohmann::json& numbers) {
    std::vector<double> values;
    values.reserve(numbers.size());
    for (const nlohmann::json& each : numbers) values.push_back(numberOf(each));
    return values;
}

nlohmann::json jsonOf(const std::vector<double>& values) {
    nlohmann::json array = nlohmann::json::array();
    for (const double value : values) array.push_back(jsonOfNumber(value));
    return array;
}

std::vector<std::string> textsOf(const nlohmann::json& texts) {
    std::vector<std::string> all;
    all.reserve(texts.size());
    for (const nlohmann::json& each : texts) all.push_back(ansiOf(each));
    return all;
}

}  // namespace qorctl::serve
