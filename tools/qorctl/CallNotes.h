#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Outcome.h"

namespace qorctl {

/// What the library tells of the calls of one step. Each is noted right behind it, on the thread
/// that made it, so that a step never shows what was told of a call that is not its own.
class CallNotes {
public:
    /// Notes the call that has just been made; `worked` is what it returned, or false where what it
    /// brought is of no use. Returns that.
    bool note(bool worked);
    /// The same for one of many, about a parameter.
    bool note(bool worked, const std::string& name);

    /// How the step ended. The cause is that of the first call that has failed, if any has.
    Outcome success(std::string text = {}) const;
    Outcome failure(std::string reason) const;

    /// Of the first call that has failed.
    qorcontrol::Cause cause() const { return told_.cause; }
    bool allWorked() const { return failed_.empty(); }
    /// "WHAT: A, B" with the parameters of the calls that failed, each with its cause where these
    /// are not the same.
    Outcome failureOfNames(const std::string& what) const;

private:
    struct Failed {
        std::string name;
        qorcontrol::Cause cause;
    };

    qorcontrol::Outcome told_;
    std::vector<Failed> failed_;
};

}  // namespace qorctl
