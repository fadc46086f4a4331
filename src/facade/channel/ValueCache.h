#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/Doubles.h"
#include "common/Guarded.h"
#include "common/Moment.h"

namespace channel {

/// The last values of a parameter and when they were had.
struct CachedValue {
    common::Doubles values;
    common::Doubles second;
    common::Doubles third;
    common::Moment stamp;
    bool mayBelongToEarlier = false;  ///< as the read was that had them
};

/// The values last read, written or streamed, and the refresh period that says how long they hold.
/// Entries are never removed, only outlived.
class ValueCache {
public:
    explicit ValueCache(std::uint32_t readPeriodMs) { setReadPeriod(readPeriodMs); }

    /// The refresh period of the ECU that is being connected.
    void setReadPeriod(std::uint32_t periodMs);
    std::uint32_t readPeriodMs();  ///< for tests

    /// Copies the arrays out; false (and nothing changed) if there are none or they are half a
    /// refresh period old. A period of 0 or 1 thus never answers.
    bool find(const std::string& name, std::vector<double>& values, std::vector<double>& second,
              std::vector<double>& third, bool& mayBelongToEarlier);
    void store(const std::string& name, CachedValue value);

    /// All of them, of whatever age; for tests.
    std::map<std::string, CachedValue> all();

    /// From now on nothing is served that was stored before: it was another QOR's, or another
    /// model's.
    void beginAnew();

    /// Whether a value that arrived then is less than so many refresh periods old.
    bool isYoungerThan(std::uint32_t periods, common::Moment arrival);

private:
    struct State {
        std::map<std::string, CachedValue> paramValueCache;
        common::Moment begin;  // entries that are not younger do not count
        std::uint32_t readPeriodMs = 0;
    };

    common::Guarded<State> state_;
};

}  // namespace channel
