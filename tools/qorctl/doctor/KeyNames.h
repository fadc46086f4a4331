#pragma once

#include "doctor/Finding.h"
#include "doctor/SettingsFacts.h"

namespace qorctl::doctor {

/// The file itself and the names in it: whether it can be read, and what nobody reads because it
/// is misspelt, stands twice or in the wrong section. (Names that are far from the library's are
/// QOR's own.)
Findings checkNames(const SettingsFacts& facts);

}  // namespace qorctl::doctor
