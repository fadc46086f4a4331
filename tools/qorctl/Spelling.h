#pragma once

#include <string>
#include <vector>

namespace qorctl {

/// The same but for the case of ASCII letters, as names in a settings file are compared.
bool isSameName(const std::string& left, const std::string& right);

/// Whether `written` may have been meant as `known`: not the same, but few letters away, or told
/// apart by blanks and dashes only.
bool isMisspelling(const std::string& written, const std::string& known);

/// The name that `written`, which is none of them, has most likely been meant as: the nearest one
/// that it is a misspelling of, or the same but for the case of letters. Empty if there is none.
std::string nearestOf(const std::string& written, const std::vector<std::string>& names);

}  // namespace qorctl
