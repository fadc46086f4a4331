#pragma once

#include <string>
#include <vector>

namespace qorctl::doctor {

/// What a 32-bit program has Windows load when it starts, and in which kind of process it runs.
struct ProgramImports {
    std::vector<std::string> dlls;  ///< as they are written in the file
    /// A .NET program for any processor: a 64-bit Windows runs it with 64 bits, whatever its head
    /// says.
    bool isForAnyProcessor = false;

    bool has(const std::string& dll) const;

    /// Of a file that cannot be read, or is no 32-bit program: none.
    static ProgramImports read(const std::string& path);
};

}  // namespace qorctl::doctor
