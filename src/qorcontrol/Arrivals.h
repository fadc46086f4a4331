#pragma once

#include <cstdint>
#include <string>
#include <vector>

// By its bare name, which is how hosts have it on their path.
#include <QorControlFacade.h>

#include "qorcontrol/Export.h"

namespace qorcontrol {

/// One value that QOR has sent by itself.
struct Arrival {
    unsigned int name;    ///< which of the names, from 0
    unsigned int missed;  ///< so many values of this name QOR has sent which the reader has never
                          ///< got, from the beginning up to this one
    double value;
    std::uint64_t timeMs;  ///< when it arrived; see `Arrivals::nowMs`
};

/// What QOR sends of some parameters, as it arrives: each value once, in the order of arrival, with
/// its time. (A queue of `QorControlFacade::startParamRead` repeats what is fresh and tells no
/// times.) A parameter that stalls brings nothing. The values flow once QOR has an ECU online, and
/// again by themselves after QOR was away.
///
/// The library owns the buffer: unlike the host's queues this object may end at any time, also
/// after the facade, from which on it only gives what it still has. Any number of threads may call
/// its operations at once; none may be in one when it ends. None but std::bad_alloc leaves them.
class QOR_API Arrivals {
public:
    static constexpr unsigned int maxSlots = 1000000;

    /// Begins to collect.
    /// @param slots  so many values can wait for the reader (at least 1, at most `maxSlots`; other
    ///               numbers are taken as the nearest of these); then the oldest go and are counted
    ///               as missed.
    Arrivals(const QorControlFacade& facade, const std::vector<std::string>& names,
             unsigned int slots);

    /// Ends it, if `stop` has not, without waiting until QOR has been told. For `lastOutcome` that
    /// is an operation.
    ~Arrivals();

    Arrivals(const Arrivals&) = delete;
    Arrivals& operator=(const Arrivals&) = delete;

    /// Replaces `values` by all that is there, waiting at most `timeoutMs` for the first one. False
    /// if there is none; `values` is empty then, and `lastOutcome` tells why: `notReady`, QOR has
    /// sent none in this time; `unknownName`, QOR does not know one of the names, so it sends none
    /// of them, which is tried again and again; `wrongOrder`, it was stopped and all has been read;
    /// the cause for which there is no agent any more. The last two come at once.
    bool read(std::vector<Arrival>& values, unsigned int timeoutMs);

    /// Ends it, and waits until QOR has been told: at most for the requests before it and for
    /// QOR's time to take this one. What has arrived can still be read. False: it has ended, but
    /// QOR could not be told.
    bool stop();

    /// The present time on the clock of `Arrival::timeMs`: the milliseconds of the system's tick
    /// count, continued beyond 32 bits (its low half is what GetTickCount returns). It moves in
    /// steps of up to 16 ms, so values that came in one step have the same time. For the time of
    /// day ask for both at one moment and add the difference.
    static std::uint64_t nowMs();

private:
    class Impl;
    Impl* impl_;
};

static_assert(sizeof(void*) != 4 || (sizeof(Arrival) == 24 && sizeof(Arrivals) == 4),
              "the library was built with another compiler, standard library or packing");

}  // namespace qorcontrol
