#pragma once

#include <string>

namespace qorctl::doctor {

/// The host in whose place the doctor looks: paths of the settings go by its program's folder, and
/// its trace lies beside it.
struct HostPlace {
    std::string program;     ///< the path of its executable
    std::string tracePath;   ///< of its trace file
    bool isAnother = false;  ///< not this program

    /// With a backslash at its end.
    std::string folder() const;

    /// What the library makes of a path in the settings: with a drive letter it stays; any other (a
    /// network path, too) is taken from the host's folder. Empty if that cannot be done.
    std::string resolved(const std::string& path) const;
};

}  // namespace qorctl::doctor
