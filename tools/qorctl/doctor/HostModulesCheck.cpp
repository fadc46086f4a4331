#include "doctor/HostModulesCheck.h"

#include <windows.h>

#include <fmt/format.h>

#include "doctor/ExecutableCheck.h"
#include "doctor/ModulesCheck.h"

namespace qorctl::doctor {
namespace {

const char* const programId = "host.program";

/// Behind the host's own folder Windows looks into its own two and into those of PATH.
ModuleFile foundElsewhere(const std::string& name) {
    constexpr DWORD maxChars = 32768;
    std::string folders;
    char folder[MAX_PATH] = "";
    for (const auto getFolder : {GetSystemDirectoryA, GetWindowsDirectoryA})
        if (getFolder(folder, MAX_PATH) != 0) folders += folder + std::string(";");
    std::string path(maxChars, '\0');
    path.resize(GetEnvironmentVariableA("PATH", path.data(), maxChars));
    folders += path;
    std::string found(maxChars, '\0');
    const DWORD length =
        SearchPathA(folders.c_str(), name.c_str(), nullptr, maxChars, found.data(), nullptr);
    found.resize(length < maxChars ? length : 0);
    return found.empty() ? ModuleFile{name, "", 0, "", {}} : ModuleFile::at(found);
}

bool isLinked(const ProgramImports& imports, const std::string& dll) {
    for (const char* const name : facadeDlls())
        if (dll == name) return imports.has(facadeDll) || imports.has(dll);
    return imports.has(dll);
}

std::string shownUse(const ProgramImports& imports) {
    if (imports.has(facadeDll)) return std::string("linked to ") + facadeDll;
    if (imports.has(cDll)) return std::string("linked to ") + cDll;
    return "linked to neither library, so it loads one when it runs";
}

Finding checkProgram(const HostModules& host) {
    const ModuleFile& file = host.program;
    if (!file.isThere())
        return Finding::problem(programId, file.name + " does not exist",
                                "let --host name the executable of the host");
    if (!file.isProgramOrDll())
        return Finding::problem(programId, file.path + " is no Windows program",
                                "let --host name the executable of the host");
    if (!file.program.isFor32Bit())
        return Finding::problem(programId, file.description() + ": it cannot load a 32-bit DLL",
                                "build the host as a 32-bit program; of an interpreter install "
                                "the 32-bit one");
    if (host.imports.isForAnyProcessor) {
        const std::string what = file.description() + ": a .NET program for any processor, which ";
        const std::string remedy = "build it for x86 (/platform:x86)";
        return host.systemRuns64Bit
                   ? Finding::problem(programId, what + "this Windows runs with 64 bits", remedy)
                   : Finding::warning(programId, what + "a 64-bit Windows runs with 64 bits",
                                      remedy);
    }
    return Finding::ok(programId,
                       fmt::format("{}, {}", file.description(), shownUse(host.imports)));
}

Finding checkMissing(const HostModules& host, const HostModules::Dll& dll, const std::string& id,
                     const std::string& remedy) {
    if (!dll.isLinked)
        return Finding::warning(id, "is not beside the host, which has to find it when it runs",
                                remedy + ", or let the host load it by its full path");
    if (!dll.elsewhere.isThere())
        return Finding::problem(id,
                                "is neither beside the host nor where Windows looks else: " +
                                    host.program.name + " does not start",
                                remedy);
    const Finding there = checkDll(id, dll.elsewhere, host.version, remedy);
    const std::string what = "is not beside the host; found elsewhere: " + there.what;
    return there.status == Status::problem ? Finding::problem(id, what, remedy)
                                           : Finding::warning(id, what, remedy);
}

Finding checkNeeded(const HostModules& host, const HostModules::Dll& dll) {
    const std::string id = "host." + dll.beside.name;
    const std::string remedy =
        "put the copy that came with the library into " + host.program.folder();
    if (!dll.beside.isThere()) return checkMissing(host, dll, id, remedy);
    return checkDll(id, dll.beside, host.version, remedy);
}

}  // namespace

std::vector<const char*> neededDlls(const ProgramImports& imports, bool hasOnlyFacadeBeside) {
    std::vector<const char*> names;
    const bool isLinkedToOne = imports.has(facadeDll) || imports.has(cDll);
    if (imports.has(facadeDll) || (!isLinkedToOne && hasOnlyFacadeBeside)) names = facadeDlls();
    if (imports.has(cDll) || names.empty()) names.push_back(cDll);
    return names;
}

HostModules HostModules::gather(const std::string& program, const std::string& version) {
    HostModules host;
    host.program = ModuleFile::at(program);
    if (!host.program.isThere()) return host;
    host.imports = ProgramImports::read(program);
    host.systemRuns64Bit = doctor::systemRuns64Bit();
    host.version = version;
    const std::string folder = host.program.folder();
    const bool hasOnlyFacade =
        ModuleFile::at(folder + facadeDll).isThere() && !ModuleFile::at(folder + cDll).isThere();
    for (const char* const name : neededDlls(host.imports, hasOnlyFacade))
        host.dlls.push_back(
            {ModuleFile::at(folder + name), foundElsewhere(name), isLinked(host.imports, name)});
    return host;
}

Findings checkHostModules(const HostModules& host) {
    Findings findings = {checkProgram(host)};
    for (const HostModules::Dll& dll : host.dlls) findings.push_back(checkNeeded(host, dll));
    return findings;
}

}  // namespace qorctl::doctor
