#pragma once

#include <ios>
#include <string>
#include <vector>

#include "doctor/SettingsFacts.h"

namespace qorctl::start {

/// The log of QOR's own, as far as the settings tell where it is: a key "Log" of any section, or
/// the program's name with ".log" beside them. Lines from before this object do not count.
class ProgramLog {
public:
    ProgramLog(const doctor::SettingsFacts& settings, const std::string& executable);

    /// The last of the new ones, at most `count`.
    std::vector<std::string> lastLines(std::size_t count) const;

private:
    const std::string path_;
    const std::streamoff sizeBefore_;
};

}  // namespace qorctl::start
