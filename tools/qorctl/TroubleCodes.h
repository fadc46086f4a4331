#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "QorControlFacade.h"
#include "TextTable.h"

namespace qorctl {

/// Trouble codes, one per row.
TextTable tableOf(const std::vector<QorControlFacade::DtcDescription>& codes);

/// Trouble codes, one object each.
nlohmann::json jsonOf(const std::vector<QorControlFacade::DtcDescription>& codes);

}  // namespace qorctl
