#pragma once

#include <string_view>

#include "behaviour/Ecu.h"
#include "behaviour/Outcome.h"

namespace simulator {

Outcome getTroubleCodes(Ecu& ecu, std::string_view payload);
Outcome runRoutine(Ecu& ecu, std::string_view payload);
Outcome execKwp(Ecu& ecu, std::string_view payload);
Outcome canBusConnect(Ecu& ecu, std::string_view payload);
Outcome canBusData(Ecu& ecu, std::string_view payload);
Outcome canBusSend(Ecu& ecu, std::string_view payload);

}  // namespace simulator
