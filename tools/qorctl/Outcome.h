#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qorcontrol/Outcome.h"

namespace qorctl {

/// How a step ended, and a few words about it.
struct Outcome {
    bool ok = false;
    std::string text;
    /// What the library tells of the step's own calls: the cause of its failure, `none` if it has
    /// not failed or no call is to blame; and whether an answer may belong to an earlier request.
    qorcontrol::Outcome told;
    /// Lines below the step: what else was seen, and what to check.
    std::vector<std::string> details = {};
    bool isTraced = true;  ///< the library had a part in it, so that its trace may tell more

    static Outcome success(std::string text = {}) { return {true, std::move(text), {}, {}}; }
    /// Of a step that no call of the library made fail; see `CallNotes` for the others.
    static Outcome failure(std::string reason) { return {false, std::move(reason), {}, {}}; }
};

}  // namespace qorctl
