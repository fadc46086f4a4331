#pragma once

#include "qorcontrol/Export.h"
#include "qorcontrol/Version.h"

/// The version of the library that is loaded; that of the headers is QOR_VERSION.
namespace qorcontrol {

/// As one number that grows: 0x00MMmmpp.
QOR_API unsigned int version() noexcept;

/// The same as a text, which lives as long as the library.
QOR_API const char* versionText() noexcept;

}  // namespace qorcontrol
