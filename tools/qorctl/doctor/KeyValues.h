#pragma once

#include "doctor/Finding.h"
#include "doctor/SettingsFacts.h"

namespace qorctl::doctor {

/// One finding for each key that the library reads: its value, where it comes from, and whether it
/// will do for the transport that the settings choose.
Findings checkValues(const SettingsFacts& facts);

}  // namespace qorctl::doctor
