#pragma once

#include <vector>

#include "cinterface/Result.h"
#include "facade/QorControlFacade.h"

namespace cinterface {

/// Trouble codes as a host gets them: numbers, and a row of texts each.
Result resultOf(std::vector<QorControlFacade::DtcDescription> codes);

}  // namespace cinterface
