#pragma once

#include <string>
#include <vector>

namespace simulator {

using Names = std::vector<std::string>;

/// The known name that the written one most likely stands for; empty when none is near. Letters in
/// the wrong case do not count as mistakes.
std::string nearestName(const std::string& written, const Names& known);

/// The end of a message about a name that nobody knows: " - did you mean "a"? Known: a, b". Of very
/// many known names only some are listed.
std::string hintFor(const std::string& written, const Names& known);

}  // namespace simulator
