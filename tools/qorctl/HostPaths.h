#pragma once

#include <string>

/// Paths as a person types them, made into what the library wants: it takes a path without a
/// drive letter as relative to the program, not to the current directory.
namespace qorctl::paths {

/// `path` as an absolute path with a drive letter. A path from the root without a drive letter
/// ("/home/...") is looked for on the current drive and then on drive Z:, where Wine shows the
/// file system of its host. Throws std::invalid_argument for what cannot have a drive letter.
std::string absolute(const std::string& path);

/// What is against making `path` absolute, for checks of a command line; empty if nothing is.
std::string whyNotAbsolute(const std::string& path);

/// The same for a file that need not exist yet: where its folder is decides.
std::string absoluteFile(const std::string& path);

/// The path of this program.
std::string ofThisProgram();

/// The path of the trace file that the library derives from a host path.
std::string traceFileOf(const std::string& hostPath);

}  // namespace qorctl::paths
