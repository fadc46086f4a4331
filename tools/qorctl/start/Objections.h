#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/ExecutableCheck.h"
#include "doctor/PeerFacts.h"
#include "start/Refusal.h"

namespace qorctl::start {

/// What the doctor finds wrong in settings, by what it does to a start.
class Objections {
public:
    Objections(const doctor::SettingsFacts& settings, const doctor::ExecutableFacts& executable);

    /// Why QOR cannot come at all, with `peer` as what is where the settings say: where it runs, or
    /// may run, on a machine that nobody can look into, the program that would start it here does
    /// not matter.
    std::optional<Refusal> whyNever(const doctor::PeerFacts& peer) const;

    /// Of what QOR may come in spite of: names that nobody reads where the host does without.
    std::vector<std::string> notes() const;

    /// A refusal whose reason is what was known before, if anything was.
    Refusal asReason(Refusal seen) const;

private:
    doctor::Findings settings_;    // the place cannot be found
    doctor::Findings names_;       // a key may be missed
    doctor::Findings executable_;  // QOR cannot be started
};

}  // namespace qorctl::start
