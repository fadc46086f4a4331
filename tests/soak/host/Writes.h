#pragma once

#include "Operations.h"

namespace soak {

bool writeOwn(Turn& turn);
bool writeText(Turn& turn);
bool control(Turn& turn);
bool selectSegment(Turn& turn);
bool clearCodes(Turn& turn);
bool readCodes(Turn& turn);
bool sendKwp(Turn& turn);
bool readCan(Turn& turn);
bool sendCan(Turn& turn);

}  // namespace soak
