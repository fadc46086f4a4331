#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/PeerFacts.h"
#include "start/ChildWatch.h"
#include "start/Refusal.h"

namespace qorctl::start {

/// What is seen from outside of a QOR that does not answer yet.
struct Sight {
    doctor::PeerFacts peer;
    doctor::Holders before;  ///< who held its place when it was not yet started
    std::string settingsPath;
    std::string executable;                   ///< the settings' own; empty: they name none
    bool isProgram = false;                   ///< that is one whose process can be watched
    bool isLate = false;                      ///< QOR has had its time to come, if it is a fast one
    std::optional<ChildWatch::End> end = {};  ///< of the process that the library has started
    std::vector<std::string> lastLines = {};  ///< of its log, once it has ended

    /// What speaks against its coming. Only these are for good, for QOR may be slow or busy, and
    /// the executable may have left it to another program: an end with an error where nobody is,
    /// and a place that another program held from the beginning.
    std::optional<Refusal> whyInVain() const;

private:
    bool isHeldByStranger() const;
    Refusal ended() const;
    Refusal silent() const;
};

}  // namespace qorctl::start
