#include "Operations.h"

#include <iterator>

#include "Reads.h"
#include "Writes.h"

namespace soak {

// No weight: a segment's call waits for good where later requests push it out of the queue, and
// what callers have given up stays there for a while. It is verified, and ordered by itself.
const Operation operations[] = {
    {"ping", 8, true, ping},
    {"read", 24, true, readMeter},
    {"readRow", 8, true, readRow},
    {"readCurve", 8, true, readCurve},
    {"readMap", 6, true, readMap},
    {"readTogether", 10, true, readTogether},
    {"describe", 4, false, describe},
    {"readUnknown", 2, true, readUnknown},
    {"writeOwn", 8, true, writeOwn},
    {"readOwn", 8, true, readOwn},
    {"writeText", 4, true, writeText},
    {"readText", 4, true, readText},
    {"control", 3, true, control},
    {"segment", 0, false, selectSegment},
    {"clearCodes", 1, true, clearCodes},
    {"readCodes", 3, true, readCodes},
    {"kwp", 4, true, sendKwp},
    {"readCan", 4, true, readCan},
    {"sendCan", 2, true, sendCan},
};
const unsigned operationCount = static_cast<unsigned>(std::size(operations));

const Operation& operationOf(Dice& dice, bool isCrowd) {
    unsigned total = 0;
    for (const Operation& operation : operations) total += operation.weight;
    for (;;) {
        unsigned place = dice.below(total);
        for (const Operation& operation : operations) {
            if (place < operation.weight) {
                if (operation.isForCrowds || !isCrowd) return operation;
                break;
            }
            place -= operation.weight;
        }
    }
}

}  // namespace soak
