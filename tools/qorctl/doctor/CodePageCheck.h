#pragma once

#include <string>

#include "doctor/Finding.h"
#include "doctor/SettingsFacts.h"

namespace qorctl::doctor {

/// Whether bytes look as if an editor had written them as UTF-8: some are no ASCII, and all fit.
bool looksLikeUtf8(const std::string& bytes);

/// The process's ANSI code page, and whether the texts of the settings survive it.
Findings checkCodePage(unsigned codePage, const SettingsFacts& facts);

}  // namespace qorctl::doctor
