#pragma once

#include <string_view>

#include "behaviour/Ecu.h"
#include "behaviour/Outcome.h"

namespace simulator {

Outcome getParamInfo(Ecu& ecu, std::string_view payload);
Outcome directCtrl(Ecu& ecu, std::string_view payload);
Outcome staticParam(Ecu& ecu, std::string_view payload);
Outcome readTogether(Ecu& ecu, std::string_view payload);
Outcome setParamList(Ecu& ecu, std::string_view payload);

}  // namespace simulator
