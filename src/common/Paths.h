#pragma once

#include <cstddef>
#include <string>

namespace common {

/// The directory of the process's executable, with a backslash at its end.
std::string executableDirectory();

/// The same for callers that must not allocate, as a zero-ended text; false if it does not fit.
bool getExecutableDirectory(char* directory, std::size_t directoryBytes) noexcept;

/// A path with a drive letter as it is; any other path (a network path too) is taken relative to
/// the executable's directory, made absolute and normalised. Empty if that cannot be done.
std::string resolveAgainstExecutable(const std::string& path);

/// Drive and directory of `path`, as they stand in it; empty if it has none or they are too long.
std::string directoryOf(const std::string& path);

/// `path` without the extension of its file name; empty if it cannot be split.
std::string withoutExtension(const std::string& path);

}  // namespace common
