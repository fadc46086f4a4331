#pragma once

#include <string>

namespace qorctl {

/// A file that is built into this program: its name in page.rc. Throws std::runtime_error if there
/// is none.
std::string builtInFile(const char* name);

}  // namespace qorctl
