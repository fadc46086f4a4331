#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "Console.h"
#include "TraceFile.h"

namespace qorctl {

/// How a step ended, and a few words about it.
struct Outcome {
    bool ok = false;
    std::string text;
    std::size_t traceLine = 0;  ///< where `text` stands in the trace; 0: not taken from there

    static Outcome success(std::string text = {}) { return {true, std::move(text), 0}; }
    static Outcome failure(std::string reason, std::size_t traceLine = 0) {
        return {false, std::move(reason), traceLine};
    }
};

/// Runs the steps of a command one after the other and tells of each whether it succeeded, how
/// long it took and, after a failure, where in the trace to look.
class StepReport {
public:
    using Step = std::function<Outcome()>;

    StepReport(Console& console, const TraceFile& trace) : console_(console), trace_(trace) {}

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
    void tellWhereToLook(const Outcome& outcome, std::size_t linesBefore);

    Console& console_;
    const TraceFile& trace_;
    nlohmann::json steps_ = nlohmann::json::array();
    unsigned int failed_ = 0;
};

}  // namespace qorctl
