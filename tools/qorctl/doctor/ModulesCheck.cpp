#include "doctor/ModulesCheck.h"

#include <fmt/format.h>

#include "doctor/HostModulesCheck.h"
#include "HostPaths.h"
#include "Spelling.h"

namespace qorctl::doctor {
namespace {

Finding checkLoaded(const ModuleFile& program, const ModuleFile& file) {
    const std::string id = "this." + file.name;
    const std::string remedy = "put the copy that came with this program into " + program.folder();
    if (!file.isThere()) return Finding::ok(id, "not loaded: it is linked into what uses it");
    if (!isSameName(program.folder(), file.folder()))
        return Finding::warning(id, file.description() + ": not beside this program", remedy);
    return checkDll(id, file, program.version, remedy);
}

Finding checkCLibrary(const ModuleFile& program, const ModuleFile& file) {
    const std::string id = "this." + file.name;
    if (!file.isThere())
        return Finding::ok(id,
                           "not beside this program, which does not need it: it is for hosts "
                           "that call C functions");
    return checkDll(id, file, program.version,
                    "put the copy that came with this program into " + program.folder());
}

}  // namespace

const std::vector<const char*>& facadeDlls() {
    static const std::vector<const char*> names = {facadeDll, "libstdc++-6.dll",
                                                   "libgcc_s_dw2-1.dll", "libwinpthread-1.dll"};
    return names;
}

Finding checkDll(const std::string& id, const ModuleFile& file, const std::string& version,
                 const std::string& remedy) {
    if (!file.isProgramOrDll() || !file.program.isFor32Bit())
        return Finding::problem(id, file.path + " is no 32-bit DLL", remedy);
    const bool isLibrary = isSameName(file.name, facadeDll) || isSameName(file.name, cDll);
    if (isLibrary && !version.empty() && file.version != version)
        return Finding::warning(
            id, fmt::format("{}: not of version {} like this program", file.description(), version),
            remedy);
    return Finding::ok(id, file.description());
}

Findings checkOwnModules(const ModuleFile& program, const std::vector<ModuleFile>& loaded,
                         const ModuleFile& cLibrary) {
    Findings findings = {Finding::ok("this.program", program.description())};
    for (const ModuleFile& file : loaded) findings.push_back(checkLoaded(program, file));
    findings.push_back(checkCLibrary(program, cLibrary));
    return findings;
}

Findings checkModules(const HostPlace& host) {
    const ModuleFile program = ModuleFile::at(paths::ofThisProgram());
    std::vector<ModuleFile> loaded;
    for (const char* const name : facadeDlls()) loaded.push_back(ModuleFile::loaded(name));
    Findings findings = checkOwnModules(program, loaded, ModuleFile::at(program.folder() + cDll));
    if (host.isAnother)
        append(findings, checkHostModules(HostModules::gather(host.program, program.version)));
    return findings;
}

}  // namespace qorctl::doctor
