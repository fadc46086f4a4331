#pragma once

#include <string>

#include "Dice.h"
#include "Judge.h"
#include "QorControlFacade.h"

namespace soak {

/// One thread's place in the load, with what it knows of the parameters that are its own.
struct Worker {
    unsigned number = 0;
    std::uint64_t steps = 0;
    unsigned written = 0;    ///< the count last written, whether QOR has said yes or not
    unsigned confirmed = 0;  ///< the last one of which QOR has said yes
    unsigned textsWritten = 0;
    unsigned textsConfirmed = 0;
    std::uint64_t textConfirmedUs = 0;
    unsigned confirmedLife = 0;  ///< of the QOR that has said yes to a count
};

/// What an operation gets: one call of the library, and the judgement of it.
struct Turn {
    const QorControlFacade& qor;
    Judge& judge;
    Worker& worker;
    Dice dice;
    unsigned timeoutMs;
    std::string where;  ///< the step, for a breach

    /// A call that waits `waitMs`, or one without a limit of its own.
    template <class Call>
    bool make(unsigned waitMs, Call call);
    template <class Call>
    bool makeUntimed(Call call);

    /// Which QOR the last call was answered by; 0 if nobody knows.
    unsigned lifeOfCall() const { return startLife == judge.life ? startLife : 0; }

    std::uint64_t startUs = 0;  ///< of the last call
    unsigned startLife = 0;     ///< of QOR, when that began
};

/// One kind of step. True if every call of it worked.
struct Operation {
    const char* name;
    unsigned weight;
    bool isForCrowds;  ///< keeps its time also where later requests push it out of the queue
    bool (*run)(Turn& turn);
};

extern const Operation operations[];
extern const unsigned operationCount;
constexpr unsigned readOperation = 1;  ///< the place of the plain read

/// The worker's next step, which is one of all operations, or of those for crowds only.
const Operation& operationOf(Dice& dice, bool isCrowd);

}  // namespace soak
