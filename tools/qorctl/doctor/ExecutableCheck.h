#pragma once

#include <string>

#include "doctor/Finding.h"
#include "doctor/HostPlace.h"
#include "doctor/ProgramFile.h"

namespace qorctl::doctor {

/// Whether this Windows has 64 bits.
bool systemRuns64Bit();

/// What stands where the settings say that QOR's program is.
struct ExecutableFacts {
    enum class File { missing, folder, closed, readable };

    std::string written;   ///< as the settings have it; empty: they name none
    std::string resolved;  ///< as the library takes it
    File file = File::missing;
    bool isThereWithExe = false;  ///< the file is missing, but not with ".exe" behind its name
    ProgramFile program;
    bool systemRuns64Bit = false;

    static ExecutableFacts gather(const std::string& written, const HostPlace& host);
};

Findings checkExecutable(const ExecutableFacts& facts);

}  // namespace qorctl::doctor
