#pragma once

#include <string>

#include "doctor/FileAccess.h"
#include "doctor/Finding.h"
#include "doctor/HostPlace.h"

namespace qorctl::doctor {

/// A file with trace settings that the library looks for.
struct TraceSettingsFacts {
    std::string path;
    bool isThere = false;
    bool isReadable = false;
    bool isSilencing = false;  ///< a line of it turns the trace off

    static TraceSettingsFacts gather(const std::string& path);
    /// Whether this text, as such a file, turns the whole trace off for good.
    static bool silences(const std::string& text);
};

/// Where the library writes what QOR exports of a model: two fixed paths.
constexpr const char* exportPath = "c:\\qor_exp.sde";
constexpr const char* addExportPath = "c:\\qor_exp_add.sde";

Finding checkTraceFile(const std::string& path, const WriteAccess& access);
Finding checkTraceSettings(const std::string& id, const TraceSettingsFacts& facts);
Finding checkExportFile(const std::string& id, const std::string& path, const WriteAccess& access);

/// All of them, of a host and this machine.
Findings checkFiles(const HostPlace& host);

}  // namespace qorctl::doctor
