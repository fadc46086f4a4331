#include "serve/streams/Source.h"

#include <algorithm>
#include <utility>

namespace qorctl::serve {
namespace {

/// The feeding thread looks every few milliseconds; more wait only while the machine is held up.
unsigned int slotsFor(std::size_t names) {
    return static_cast<unsigned int>(std::min<std::size_t>(names * 200, 20000));
}

}  // namespace

Source::Source(const QorControlFacade& facade, std::vector<std::string> names)
    : names_(std::move(names)),
      arrivals_(facade, names_, slotsFor(names_.size())),
      missed_(names_.size(), 0) {
    for (const std::string& name : names_)
        numbers_.emplace(name, static_cast<unsigned int>(numbers_.size()));
}

std::vector<qorcontrol::Arrival> Source::read() {
    std::vector<qorcontrol::Arrival> arrived;
    if (arrivals_.read(arrived, 0)) {
        isTroubleTold_ = false;
        for (auto& each : arrived) {
            const unsigned int before = std::exchange(missed_[each.name], each.missed);
            each.missed -= before;
        }
    } else {
        silence_ = qorcontrol::lastOutcome();
    }
    return arrived;
}

bool Source::hasNewTrouble(qorcontrol::Outcome& told) {
    if (isTroubleTold_ || silence_.cause == qorcontrol::Cause::none ||
        silence_.cause == qorcontrol::Cause::notReady)
        return false;
    isTroubleTold_ = true;
    told = silence_;
    return true;
}

}  // namespace qorctl::serve
