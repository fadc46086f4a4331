#pragma once

#include "Operations.h"
#include "qorcontrol/Outcome.h"

namespace soak {

/// Of the calling thread's last call: QOR owed an answer to an earlier one, which this may be.
inline bool qorMayMeanEarlier() {
    return qorcontrol::lastOutcome().mayBelongToEarlier;
}

bool ping(Turn& turn);
bool readMeter(Turn& turn);
bool readRow(Turn& turn);
bool readCurve(Turn& turn);
bool readMap(Turn& turn);
bool readTogether(Turn& turn);
bool describe(Turn& turn);
bool readUnknown(Turn& turn);
bool readOwn(Turn& turn);
bool readText(Turn& turn);

}  // namespace soak
