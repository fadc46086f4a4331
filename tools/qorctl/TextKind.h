#pragma once

#include <string>
#include <vector>

namespace qorctl {

/// QOR does not tell which parameters are texts. A text is one array of character codes, as long as
/// the text may be, and has no unit.
/// @param unit  the parameter's; empty if it has none, or is not known
/// @{

/// False for what can only be numbers.
bool couldBeText(const std::vector<double>& values, const std::string& unit);

/// The same, and there is something to read in it, letters and digits mostly; a row of one
/// character over and over is none.
bool looksLikeText(const std::vector<double>& values, const std::string& unit);

/// @}

/// The text without what the ECU pads it with.
std::string withoutPadding(std::string text);

}  // namespace qorctl
