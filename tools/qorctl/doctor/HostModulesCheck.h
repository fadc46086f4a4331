#pragma once

#include <string>
#include <vector>

#include "doctor/Finding.h"
#include "doctor/ModuleFile.h"
#include "doctor/ProgramImports.h"

namespace qorctl::doctor {

/// A host's program and the DLLs of the package that it needs.
struct HostModules {
    struct Dll {
        ModuleFile beside;      ///< beside the host
        ModuleFile elsewhere;   ///< where else Windows finds it for this account
        bool isLinked = false;  ///< without it Windows does not start the host
    };

    ModuleFile program;
    ProgramImports imports;
    bool systemRuns64Bit = false;
    std::string version;  ///< which the library should have; empty: any
    std::vector<Dll> dlls;

    static HostModules gather(const std::string& program, const std::string& version);
};

/// The DLLs of the package that a host needs which has these imports. One that has neither library
/// among them loads one at run time, as an interpreter does, or has it from a DLL of its own: that
/// is the C library, or the other one where only that lies beside the host.
std::vector<const char*> neededDlls(const ProgramImports& imports, bool hasOnlyFacadeBeside);

Findings checkHostModules(const HostModules& host);

}  // namespace qorctl::doctor
