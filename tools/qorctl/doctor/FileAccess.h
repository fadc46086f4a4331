#pragma once

#include <string>

namespace qorctl::doctor {

/// Whether a program of this account could write a file, found out without leaving one behind and
/// without touching one that is there.
struct WriteAccess {
    bool isPossible = false;
    bool fileExists = false;
    std::string reason;  ///< why not

    static WriteAccess to(const std::string& path);
};

/// What the system says about an error code, on one line.
std::string systemText(unsigned long error);

}  // namespace qorctl::doctor
