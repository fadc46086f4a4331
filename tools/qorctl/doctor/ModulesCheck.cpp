#include "doctor/ModulesCheck.h"

#include <fmt/format.h>

#include "HostPaths.h"
#include "Spelling.h"

namespace qorctl::doctor {
namespace {

/// The library and what it was linked to.
const std::vector<const char*> dllNames = {"QorControlFacade.dll", "libstdc++-6.dll",
                                           "libgcc_s_dw2-1.dll", "libwinpthread-1.dll"};

std::string folderOf(const ModuleFile& file) {
    return file.path.substr(0, file.path.find_last_of("\\/") + 1);
}

bool isProgramFile(const ModuleFile& file) {
    return file.program.kind == ProgramFile::Kind::program ||
           file.program.kind == ProgramFile::Kind::library;
}

Finding checkLoaded(const ModuleFile& program, const ModuleFile& file) {
    const std::string id = "this." + file.name;
    if (!file.isThere()) return Finding::ok(id, "not loaded: it is linked into what uses it");
    if (isSameName(folderOf(program), folderOf(file))) return Finding::ok(id, file.description());
    return Finding::warning(id, file.description() + ": not beside this program",
                            "put the copy that came with the library into " + folderOf(program));
}

Finding checkHostProgram(const ModuleFile& file) {
    const std::string id = "host.program";
    if (!file.isThere())
        return Finding::problem(id, file.name + " does not exist",
                                "let --host name the executable of the host");
    if (!isProgramFile(file))
        return Finding::problem(id, file.path + " is no Windows program",
                                "let --host name the executable of the host");
    if (!file.program.isFor32Bit())
        return Finding::problem(id, file.description() + ": it cannot load a 32-bit DLL",
                                "build the host as a 32-bit program");
    return Finding::ok(id, file.description());
}

Finding checkBeside(const ModuleFile& program, const ModuleFile& file) {
    const std::string id = "host." + file.name;
    const std::string remedy = "put the copy that came with the library into " + folderOf(program);
    if (!file.isThere())
        return Finding::warning(id, "is not beside the host: another one may be found, or none",
                                remedy);
    if (!isProgramFile(file) || !file.program.isFor32Bit())
        return Finding::problem(id, file.path + " is no 32-bit DLL", remedy);
    return Finding::ok(id, file.description());
}

}  // namespace

Findings checkOwnModules(const ModuleFile& program, const std::vector<ModuleFile>& loaded) {
    Findings findings = {Finding::ok("this.program", program.description())};
    for (const ModuleFile& file : loaded) findings.push_back(checkLoaded(program, file));
    return findings;
}

Findings checkHostModules(const ModuleFile& program, const std::vector<ModuleFile>& beside) {
    Findings findings = {checkHostProgram(program)};
    if (!program.isThere()) return findings;
    for (const ModuleFile& file : beside) findings.push_back(checkBeside(program, file));
    return findings;
}

Findings checkModules(const HostPlace& host) {
    std::vector<ModuleFile> loaded;
    std::vector<ModuleFile> beside;
    for (const char* const name : dllNames) {
        loaded.push_back(ModuleFile::loaded(name));
        beside.push_back(ModuleFile::at(host.folder() + name));
    }
    Findings findings = checkOwnModules(ModuleFile::at(paths::ofThisProgram()), loaded);
    if (host.isAnother) append(findings, checkHostModules(ModuleFile::at(host.program), beside));
    return findings;
}

}  // namespace qorctl::doctor
