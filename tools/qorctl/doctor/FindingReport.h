#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "doctor/Finding.h"

namespace qorctl::doctor {

/// Whether none of them keeps a host from working.
bool wouldWork(const Findings& findings);

/// One line per finding, in columns, the worst last; below a warning or a problem its remedy. A
/// line about the whole ends it.
std::vector<std::string> linesOf(const Findings& findings);

/// One object per finding, in the order of the checks.
nlohmann::json jsonOf(const Findings& findings);

}  // namespace qorctl::doctor
