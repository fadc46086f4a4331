#pragma once

#include <string>
#include <vector>

namespace qorctl::doctor {

/// A process that has something which the settings name.
struct Holder {
    unsigned long process = 0;  ///< its id; 0: the system does not tell
    std::string program;        ///< its executable, with its path if the system tells; or empty

    bool isKnown() const { return !program.empty(); }
    /// For people.
    std::string description() const;
    /// Whether it may be the program at that path: the same path, or the same file name where no
    /// more is known.
    bool maybeIs(const std::string& path) const;

    static Holder of(unsigned long process);
};

using Holders = std::vector<Holder>;

/// All of them, for people.
std::string namesOf(const Holders& holders);

}  // namespace qorctl::doctor
