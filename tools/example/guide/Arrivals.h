#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "QorControlFacade.h"

/// The examples of the host guide: what QOR sends, as it arrives.
namespace guide {

unsigned int record(const QorControlFacade& qor, const std::vector<std::string>& names,
                    unsigned int forMs, std::ostream& file);

}  // namespace guide
