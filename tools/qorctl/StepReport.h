#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "Console.h"
#include "Outcome.h"

namespace qorctl {

/// Runs the steps of a command one after the other and tells of each whether it succeeded, how
/// long it took and, after a failure, the cause that the library tells, what to check, and where
/// the trace is.
class StepReport {
public:
    using Step = std::function<Outcome()>;

    StepReport(Console& console, std::string tracePath)
        : console_(console), tracePath_(std::move(tracePath)) {}

    /// Runs `step` unless the program was interrupted, which counts as a failure.
    bool run(const std::string& title, const Step& step);

    /// Runs `step` in any case: for what has to be brought to its end.
    bool runAlways(const std::string& title, const Step& step);

    bool allSucceeded() const { return failed_ == 0; }

    /// The line below everything: how many steps succeeded.
    std::string summary() const;

    /// One object per step.
    const nlohmann::json& asJson() const { return steps_; }

private:
    void tell(const std::string& title, const Outcome& outcome, double elapsedMs);
    void tellWhatTheLibraryTells(const Outcome& outcome);
    void detail(const std::string& text) { console_.line("        " + text); }

    Console& console_;
    const std::string tracePath_;
    nlohmann::json steps_ = nlohmann::json::array();
    unsigned int failed_ = 0;
};

}  // namespace qorctl
