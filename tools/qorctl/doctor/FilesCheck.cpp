#include "doctor/FilesCheck.h"

#include <windows.h>

#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace qorctl::doctor {
namespace {

/// Of all words for the trace these two silence it; "notrace" is looked for before any other word,
/// "include" only where none of the others stands in the line.
bool lineSilences(const std::string& line) {
    if (line.substr(0, 1) == "#") return false;
    const auto has = [&](const char* word) { return line.find(word) != std::string::npos; };
    if (has("notrace")) return true;
    for (const char* const earlier : {"tid", "tc", "hpc", "dt", "nid", "tl", "ts", "tfr"})
        if (has(earlier)) return false;
    const std::size_t equals = line.find('=');
    return has("include") && equals != std::string::npos &&
           line.find_first_not_of(" \r", equals + 1) != std::string::npos;
}

std::string settingsBeside(const std::string& tracePath) {
    return tracePath.substr(0, tracePath.rfind('.')) + ".cfg";
}

}  // namespace

bool TraceSettingsFacts::silences(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (lineSilences(line)) return true;
    return false;
}

TraceSettingsFacts TraceSettingsFacts::gather(const std::string& path) {
    TraceSettingsFacts facts;
    facts.path = path;
    facts.isThere = GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    std::ifstream file(path);
    facts.isReadable = file.is_open();
    if (facts.isReadable) facts.isSilencing = silences({std::istreambuf_iterator<char>(file), {}});
    return facts;
}

Finding checkTraceFile(const std::string& path, const WriteAccess& access) {
    const std::string id = "trace.file";
    if (access.isPossible)
        return Finding::ok(id, path + (access.fileExists ? " can be written (the next host begins "
                                                           "it anew)"
                                                         : " can be written"));
    return Finding::warning(id, fmt::format("{} cannot be written: {}", path, access.reason),
                            "give the account of the host the right to write there; until then "
                            "nothing tells why an operation failed");
}

Finding checkTraceSettings(const std::string& id, const TraceSettingsFacts& facts) {
    if (!facts.isThere) return Finding::ok(id, facts.path + " is not there: everything is traced");
    if (!facts.isReadable)
        return Finding::warning(id, facts.path + " cannot be read, and does not count",
                                "make it a file that the account of the host can read");
    if (facts.isSilencing)
        return Finding::warning(id, facts.path + " turns the trace off",
                                "remove its lines with \"notrace\" and \"include\"");
    return Finding::ok(id, facts.path);
}

Finding checkExportFile(const std::string& id, const std::string& path, const WriteAccess& access) {
    if (access.isPossible) return Finding::ok(id, path + " can be written");
    return Finding::warning(
        id,
        fmt::format("{} cannot be written: {}; what QOR exports of a model would be lost", path,
                    access.reason),
        "give the account of the host the right to write files in the root of drive C, if the "
        "host opens models");
}

Findings checkFiles(const HostPlace& host) {
    const std::string& trace = host.tracePath;
    return {checkTraceFile(trace, WriteAccess::to(trace)),
            checkTraceSettings("trace.settings", TraceSettingsFacts::gather(settingsBeside(trace))),
            checkTraceSettings("trace.librarySettings",
                               TraceSettingsFacts::gather(host.folder() + "QorControlFacade.cfg")),
            checkExportFile("export.file", exportPath, WriteAccess::to(exportPath)),
            checkExportFile("export.addFile", addExportPath, WriteAccess::to(addExportPath))};
}

}  // namespace qorctl::doctor
