#pragma once

#include <string>
#include <vector>

namespace simulator {

/// The arguments of a command line as the operating system holds it. A line that begins with a
/// blank has no program name: that is how the host's library starts this program, so the C
/// run-time's argv, which takes the first word for the name, cannot be relied on. A word may be
/// quoted; a backslash is an ordinary character, since the words are paths.
std::vector<std::string> argumentsOf(const std::string& commandLine);

/// The settings path in the arguments: what follows "-external_operating", or the only argument.
/// Empty when there is none.
std::string settingsPathIn(const std::vector<std::string>& arguments);

/// Whether a host started it, with the switch.
bool isExternallyOperated(const std::vector<std::string>& arguments);

}  // namespace simulator
