#pragma once

#include <string_view>

#include "behaviour/Ecu.h"
#include "behaviour/Outcome.h"
#include "wire/Record.h"

namespace simulator {

Outcome getParamInfo(Ecu& ecu, std::string_view payload);
Outcome directCtrl(Ecu& ecu, std::string_view payload);
Outcome staticParam(Ecu& ecu, std::string_view payload);
Outcome readTogether(Ecu& ecu, std::string_view payload);
Outcome setParamList(Ecu& ecu, std::string_view payload);

/// A request that reads, changed so that it reads the parameter behind (of the last one: the
/// first). Any other request as it is.
Record askingForAnother(Record request, const ParameterStore& parameters);

}  // namespace simulator
