#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "qorcontrol/Arrivals.h"
#include "qorcontrol/Outcome.h"

namespace qorctl::serve {

/// Parameters that QOR was told once to send, for however many clients: an end of the library's
/// reading ends that of the same names for everybody, so no name is ever in two of these.
class Source {
public:
    /// Begins to collect. On the thread of the library.
    Source(const QorControlFacade& facade, std::vector<std::string> names);
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    const std::vector<std::string>& names() const { return names_; }
    bool has(const std::string& name) const { return numbers_.count(name) != 0; }

    /// @name The feeding thread's
    /// @{

    /// What has come since the last time. `missed` counts those that went before this value and
    /// after the one before it.
    std::vector<qorcontrol::Arrival> read();
    /// Why nothing comes, told once until something does.
    bool hasNewTrouble(qorcontrol::Outcome& told);
    /// @}

    /// Ends it, and waits until QOR knows. On the thread of the library.
    void stop() { arrivals_.stop(); }

private:
    const std::vector<std::string> names_;
    std::unordered_map<std::string, unsigned int> numbers_;
    qorcontrol::Arrivals arrivals_;
    std::vector<unsigned int> missed_;  // so far, of each name
    qorcontrol::Outcome silence_;
    bool isTroubleTold_ = false;
};

}  // namespace qorctl::serve
