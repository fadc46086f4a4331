#pragma once

#include <string>
#include <vector>

#include "doctor/Finding.h"
#include "doctor/HostPlace.h"
#include "doctor/ModuleFile.h"

namespace qorctl::doctor {

inline const char* const facadeDll = "QorControlFacade.dll";
inline const char* const cDll = "QorControlC.dll";

/// The DLL of the C++ class and what it was linked to: whoever uses the first needs all.
const std::vector<const char*>& facadeDlls();

/// What is against a DLL of the package that is there, if anything is: not 32-bit, or the library
/// of another version than `version`. (Empty: unknown. Run-time DLLs have none.)
Finding checkDll(const std::string& id, const ModuleFile& file, const std::string& version,
                 const std::string& remedy);

/// This program: it and the library in it, to which the run-time DLLs belong, must be 32-bit and
/// come from one folder. Beside it lies the library for all other hosts.
Findings checkOwnModules(const ModuleFile& program, const std::vector<ModuleFile>& loaded,
                         const ModuleFile& cLibrary);

/// Both, of this process and of a host that is another.
Findings checkModules(const HostPlace& host);

}  // namespace qorctl::doctor
