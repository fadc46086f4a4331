#pragma once

#include <string>

namespace common {

/// The calling thread's last-error code as "code: %d  text: %s", on one line: line breaks become
/// blanks, a code without a system text gives "(NULL)", and the whole is cut at 4095 characters.
/// Call it before anything that may change the code.
std::string lastErrorText();

}  // namespace common
