#pragma once

#include <string>

namespace qorctl {

/// Name and version of this program, and of the library that it has loaded and where from.
std::string versionText();

}  // namespace qorctl
