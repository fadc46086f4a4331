#include "VersionText.h"

#include <fmt/format.h>

#include "doctor/ModuleFile.h"
#include "qorcontrol/Version.h"

namespace qorctl {

std::string versionText() {
    const auto library = doctor::ModuleFile::loaded("QorControlFacade.dll");
    return fmt::format("qorctl {}\n{} {} ({})", QOR_VERSION_TEXT, library.name,
                       library.version.empty() ? "without a version" : library.version,
                       library.path);
}

}  // namespace qorctl
