#pragma once

#include <string>

#include "doctor/ProgramFile.h"

namespace qorctl::doctor {

/// A program or DLL that takes part, as a file.
struct ModuleFile {
    std::string name;  ///< without folder
    std::string path;  ///< empty: it is not there, or not loaded
    unsigned long long bytes = 0;
    std::string version;  ///< of its version resource; empty: it has none
    ProgramFile program;

    bool isThere() const { return !path.empty(); }
    bool isProgramOrDll() const;
    /// Where it is, with a backslash at its end.
    std::string folder() const;
    /// Version (or size) and path.
    std::string description() const;

    /// The file at `path`, if there is one.
    static ModuleFile at(const std::string& path);
    /// The module of that name which this process has loaded.
    static ModuleFile loaded(const char* name);
};

}  // namespace qorctl::doctor
