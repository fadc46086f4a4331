#include "guide/Arrivals.h"

#include "qorcontrol/Arrivals.h"

namespace guide {

// [Arrivals]
// Writes "milliseconds;name;value" for each value that QOR sends in that time. Returns how many it
// could not write because they came too fast.
unsigned int record(const QorControlFacade& qor, const std::vector<std::string>& names,
                    unsigned int forMs, std::ostream& file) {
    using qorcontrol::Arrivals;
    const auto beginMs = Arrivals::nowMs();
    Arrivals arrivals(qor, names, 10000);
    std::vector<unsigned int> missed(names.size());
    std::vector<qorcontrol::Arrival> values;
    while (Arrivals::nowMs() - beginMs < forMs) {
        if (!arrivals.read(values, 100)) continue;  // lastOutcome tells why
        for (const qorcontrol::Arrival& each : values) {
            file << each.timeMs - beginMs << ';' << names[each.name] << ';' << each.value << '\n';
            missed[each.name] = each.missed;
        }
    }
    unsigned int all = 0;
    for (const unsigned int count : missed) all += count;
    return all;
}
// [/Arrivals]

}  // namespace guide
