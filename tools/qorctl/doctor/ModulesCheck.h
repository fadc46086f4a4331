#pragma once

#include <vector>

#include "doctor/Finding.h"
#include "doctor/HostPlace.h"
#include "doctor/ModuleFile.h"

namespace qorctl::doctor {

/// This program: it and the library in it, to which the run-time DLLs belong, must be 32-bit and
/// come from one folder.
Findings checkOwnModules(const ModuleFile& program, const std::vector<ModuleFile>& loaded);

/// Another host: its program, and the DLLs that must lie beside it.
Findings checkHostModules(const ModuleFile& program, const std::vector<ModuleFile>& beside);

/// Both, of this process and of a host that is another.
Findings checkModules(const HostPlace& host);

}  // namespace qorctl::doctor
