#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qorctl {

/// All values, each in the fewest digits that make it up again, separated by blanks.
std::string textOf(const std::vector<double>& values);

/// A number. JSON knows no infinities and nothing that is no number: these are texts.
nlohmann::json jsonNumber(double value);

/// An array of such numbers.
nlohmann::json jsonOf(const std::vector<double>& values);

}  // namespace qorctl
