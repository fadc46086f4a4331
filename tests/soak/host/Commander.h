#pragma once

#include <memory>
#include <string>

#include "Boxes.h"
#include "Load.h"
#include "StreamReader.h"

namespace soak {

struct HostSettings {
    std::string settingsPath;
    std::string hostPath;  ///< empty: no trace
    std::string boxCaption;
    std::uint64_t seed = 0;
    unsigned threads = 64;
    unsigned graceMs = 0;
};

/// Carries out the orchestrator's orders, which come in lines; each is answered by a line that
/// begins with "= ".
class Commander {
public:
    Commander(Report& report, const HostSettings& settings);

    /// False at the last one.
    bool carryOut(const std::string& line);

    /// For the signs of life.
    std::string state();

private:
    std::string answer(const std::string& order, const std::string& rest);
    std::string openFacade(const std::string& way);
    std::string closeFacade();
    std::string stream(bool wanted);
    std::string recover(const std::string& sinceUs);
    std::string await();
    std::string connect(const std::string& periodMs);
    std::string quiet();
    std::string takeCensus();

    Report& report_;
    const HostSettings settings_;
    Judge judge_;
    std::unique_ptr<QorControlFacade> qor_;
    Load load_;
    StreamReader streams_;
    Boxes boxes_;
    unsigned step_ = 0;
};

}  // namespace soak
